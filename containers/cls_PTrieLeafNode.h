#ifndef cls_PTrieLeafNode_h
#define cls_PTrieLeafNode_h

#include "cls_PTrieNode.h"

// The node holding one entry of a cls_PTrie, its key and its value. Keys
// are compared whole, as words, so a walk that tested only some bits on
// the way down still finds only the key it looked for.
template <class K, class V, int N>
class cls_PTrieLeafNode : public cls_PTrieNode<K, V, N> {
public:
  using typename cls_PTrieNode<K, V, N>::Trie;
  using typename cls_PTrieNode<K, V, N>::Leaf;
  using typename cls_PTrieNode<K, V, N>::TrieKey;
  using Node = cls_PTrieNode<K, V, N>;

  cls_PTrieLeafNode(K const& key, V const& value) : m_Key(key), m_Value(value) {}

  K const& Key() const noexcept { return m_Key; }
  V& Value() noexcept { return m_Value; }
  V const& Value() const noexcept { return m_Value; }

  Leaf const* Locate(TrieKey const& key) const override { return Holds(key) ? this : nullptr; }

  // An equal key takes the new value here (or keeps its own); any other
  // needs a branch at the highest bit where it differs from this leaf's key.
  int Insert(Trie& trie, TrieKey const& key, K const&, V const& value, bool replace) override {
    int const bit = TrieKey(m_Key).FirstBit(TrieKey::kBits - 1, key);
    if (bit >= 0) return bit;
    if (replace) {
      m_Value = value;
      trie.SetItem(this);
    } else {
      trie.SetItem(nullptr);
    }
    return TrieKey::kBits;
  }

  Node* Remove(Trie& trie, TrieKey const& key) override {
    if (!Holds(key)) return this;
    trie.DecSize();
    return nullptr;
  }

  Node const* Child(bool) const override { return nullptr; }

private:
  bool Holds(TrieKey const& key) const { return TrieKey(m_Key).FirstBit(TrieKey::kBits - 1, key) < 0; }

  K m_Key;
  V m_Value;
};

#endif
