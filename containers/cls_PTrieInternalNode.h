#ifndef cls_PTrieInternalNode_h
#define cls_PTrieInternalNode_h

#include "cls_PTrieLeafNode.h"
#include "cls_PTrieNode.h"

#include <cstdint>
#include <memory>

// A branch of a cls_PTrie on one bit: keys with the bit set lie below the
// set-side child, the others below the clear-side child.
//
// Invariants: both children exist and are owned by this node (only a node
// that Remove hands back for deletion has lost them); every key below it
// agrees with the others on all bits above m_Bit, and each child's bit (if
// it is internal) is lower than m_Bit. So a walk tests only bits where keys
// really part, and it tests fewer than 32 * N of them.
template <class K, class V, int N>
class cls_PTrieInternalNode : public cls_PTrieNode<K, V, N> {
public:
  using typename cls_PTrieNode<K, V, N>::Trie;
  using typename cls_PTrieNode<K, V, N>::Leaf;
  using typename cls_PTrieNode<K, V, N>::TrieKey;
  using Node = cls_PTrieNode<K, V, N>;

  cls_PTrieInternalNode(int bit, Node* set, Node* clear) noexcept : m_Bit(bit), m_Set(set), m_Clear(clear) {}

  ~cls_PTrieInternalNode() override {
    delete m_Set;
    delete m_Clear;
  }

  // A new node at bit parting a new leaf for entry from sibling, the
  // subtree whose keys differ from key at bit and agree with it above. The
  // trie counts the leaf and takes it as its item; if an allocation fails,
  // nothing has changed and sibling still belongs to the caller.
  static cls_PTrieInternalNode* Branch(Trie& trie, int bit, TrieKey const& key, K const& entry, V const& value,
                                       Node* sibling) {
    std::unique_ptr<Leaf> leaf(new Leaf(entry, value));
    bool const set = key.BitSet(bit);
    auto const node = new cls_PTrieInternalNode(bit, set ? leaf.get() : sibling, set ? sibling : leaf.get());
    trie.IncSize();
    trie.SetItem(leaf.release());
    return node;
  }

  Leaf const* Locate(TrieKey const& key) const override { return Child(key)->Locate(key); }

  // A branch bit above this node's goes up to where it belongs (the
  // placed-entry answer kBits is above every bit); one below it stands
  // between this node and the child.
  int Insert(Trie& trie, TrieKey const& key, K const& entry, V const& value, bool replace) override {
    Node*& child = Child(key);
    int const bit = child->Insert(trie, key, entry, value, replace);
    if (bit > m_Bit) return bit;
    child = Branch(trie, bit, key, entry, value, child);
    return TrieKey::kBits;
  }

  // When the child answers null, its leaf is gone and this node has one
  // child left: that child is detached, so that deleting this node spares
  // it, and takes this node's place.
  Node* Remove(Trie& trie, TrieKey const& key) override {
    Node*& child = Child(key);
    Node* const old = child;
    Node* const replacement = old->Remove(trie, key);
    if (replacement == old) return this;
    child = replacement;
    delete old;
    if (replacement != nullptr) return this;
    Node*& other = &child == &m_Set ? m_Clear : m_Set;
    Node* const survivor = other;
    other = nullptr;
    return survivor;
  }

  Node const* Child(bool setSide) const override { return setSide ? m_Set : m_Clear; }

private:
  Node const* Child(TrieKey const& key) const noexcept { return key.BitSet(m_Bit) ? m_Set : m_Clear; }
  Node*& Child(TrieKey const& key) noexcept { return key.BitSet(m_Bit) ? m_Set : m_Clear; }

  std::int32_t m_Bit;
  Node* m_Set;
  Node* m_Clear;
};

#endif
