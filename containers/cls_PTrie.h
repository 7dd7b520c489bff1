#ifndef cls_PTrie_h
#define cls_PTrie_h

#include "cls_PTrieInternalNode.h"
#include "cls_PTrieKey.h"
#include "cls_PTrieLeafNode.h"
#include "cls_PTrieNode.h"

#include <cstdint>
#include <cstdlib>
#include <utility>

template <class K, class V, int N>
class cls_PTrieIter;

// A map from keys of N 32-bit words (cls_PTrieKeyWords<K> gives them) to
// values: a binary PATRICIA trie. Internal nodes branch on the bits where
// the keys below them first part, leaves hold the entries; a lookup tests
// at most one bit per level and compares one whole key at the end. Nothing
// is compared by order and nothing is balanced; iteration gives ascending
// key order, word N - 1 most significant.
//
// Invariants: m_Root is null exactly when m_Size is 0; a trie of n entries
// has n leaves and n - 1 internal nodes, and owns them all. m_Item is the
// leaf last inserted or updated (null after InsertNew of a present key); it
// is an answer channel from the nodes to Insert and is read nowhere else,
// so it may be left naming a leaf removed since.
//
// Lookups convert the key on their own stack, so a trie that nobody changes
// may be read from several threads at once. A trie owns its nodes and is
// not copyable. Absent keys given to ConstGet, like other programming
// errors, call abort().
template <class K, class V, int N>
class cls_PTrie {
public:
  using Node = cls_PTrieNode<K, V, N>;
  using Leaf = cls_PTrieLeafNode<K, V, N>;
  using InternalNode = cls_PTrieInternalNode<K, V, N>;
  using Iter = cls_PTrieIter<K, V, N>;
  using TrieKey = cls_PTrieKey<K, N>;

  cls_PTrie() noexcept : m_Size(0), m_Root(nullptr), m_Item(nullptr) {}
  cls_PTrie(cls_PTrie const&) = delete;
  cls_PTrie& operator=(cls_PTrie const&) = delete;
  ~cls_PTrie() { delete m_Root; }

  // Adds key with value, or gives a present key the new value (the size
  // stays). Returns the value as the trie holds it, valid until the key is
  // removed or the trie cleared.
  V* Insert(K const& key, V const& value) { return Put(key, value, true); }

  // Adds key with value and returns the value as Insert does; null, changing
  // nothing, if key is present. One walk where IsMember and Insert take two.
  V* InsertNew(K const& key, V const& value) { return Put(key, value, false); }

  // Takes key out; false, changing nothing, if it is absent.
  bool Remove(K const& key) {
    if (m_Root == nullptr) return false;
    TrieKey const words(key);
    std::int32_t const before = m_Size;
    Node* const replacement = m_Root->Remove(*this, words);
    if (replacement != m_Root) {
      delete m_Root;
      m_Root = replacement;
    }
    return m_Size != before;
  }

  bool IsMember(K const& key) const { return ConstGetPtr(key) != nullptr; }

  // The leaf holding key, or null.
  Leaf const* ConstGetPtr(K const& key) const {
    if (m_Root == nullptr) return nullptr;
    return m_Root->Locate(TrieKey(key));
  }

  // The value of a present key.
  V const& ConstGet(K const& key) const {
    Leaf const* const leaf = ConstGetPtr(key);
    if (leaf == nullptr) std::abort();
    return leaf->Value();
  }

  void Clear() noexcept {
    delete m_Root;
    m_Root = nullptr;
    m_Size = 0;
  }

  // Exchanges the entries of the two tries: an owner can empty its trie
  // first and let the entries end afterwards, when they may ask it again.
  void Swap(cls_PTrie& other) noexcept {
    std::swap(m_Size, other.m_Size);
    std::swap(m_Root, other.m_Root);
    std::swap(m_Item, other.m_Item);
  }

  int Size() const noexcept { return m_Size; }

  // For the nodes: a leaf was added or removed, or now holds the value that
  // Insert is to answer with (null: a present key kept its value).
  void IncSize() noexcept { ++m_Size; }
  void DecSize() noexcept {
    if (m_Size == 0) std::abort();
    --m_Size;
  }
  void SetItem(Leaf* leaf) noexcept { m_Item = leaf; }

private:
  // A walk starts at the root.
  friend Iter;

  // The leaves answer a present key with the item null when they keep its
  // value (replace false).
  V* Put(K const& key, V const& value, bool replace) {
    TrieKey const words(key);
    if (m_Root == nullptr) {
      auto const leaf = new Leaf(key, value);
      m_Root = leaf;
      IncSize();
      SetItem(leaf);
    } else {
      int const bit = m_Root->Insert(*this, words, key, value, replace);
      if (bit < TrieKey::kBits) m_Root = InternalNode::Branch(*this, bit, words, key, value, m_Root);
    }
    return m_Item != nullptr ? &m_Item->Value() : nullptr;
  }

  std::int32_t m_Size;
  Node* m_Root;
  Leaf* m_Item;
};

#endif
