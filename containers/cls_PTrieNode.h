#ifndef cls_PTrieNode_h
#define cls_PTrieNode_h

#include "cls_PTrieKey.h"
#include "mem_Alloc.h"

template <class K, class V, int N>
class cls_PTrie;
template <class K, class V, int N>
class cls_PTrieLeafNode;

// A node of a cls_PTrie: an internal node that branches on one bit, or a
// leaf that holds one entry. Each operation works on the subtree below the
// node and recurses at most once per level, and a trie is at most 32 * N
// internal nodes deep, so the recursion is bounded by the key's width.
template <class K, class V, int N>
class cls_PTrieNode : public mem_AllocationOperators {
public:
  using Trie = cls_PTrie<K, V, N>;
  using Leaf = cls_PTrieLeafNode<K, V, N>;
  using TrieKey = cls_PTrieKey<K, N>;

  cls_PTrieNode() = default;
  cls_PTrieNode(cls_PTrieNode const&) = delete;
  cls_PTrieNode& operator=(cls_PTrieNode const&) = delete;
  virtual ~cls_PTrieNode() = default;

  // The leaf holding key, or null.
  virtual Leaf const* Locate(TrieKey const& key) const = 0;

  // Puts entry (its words in key) into this subtree, telling the trie of a
  // new leaf (its size) and of the leaf that now holds the value (its item).
  // A present key takes value only if replace is set; otherwise it keeps
  // its own and the item is null. Returns TrieKey::kBits once the entry is
  // placed, or else the number of the bit at which a new branch must
  // stand, above this subtree.
  virtual int Insert(Trie& trie, TrieKey const& key, K const& entry, V const& value, bool replace) = 0;

  // Takes key out of this subtree and returns what replaces the subtree:
  // this node if it stays, null if the subtree is gone, or the surviving
  // child of a node that lost its other child. The caller deletes this node
  // when the answer is another; it then owns nothing that still lives.
  virtual cls_PTrieNode* Remove(Trie& trie, TrieKey const& key) = 0;

  // The child on the set side (setSide) or on the clear side of an
  // internal node; null for a leaf. What a walk in key order descends by.
  virtual cls_PTrieNode const* Child(bool setSide) const = 0;
};

#endif
