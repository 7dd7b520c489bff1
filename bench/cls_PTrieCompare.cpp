// Inserts and looks up the same two-word keys (a class id and an object id,
// as the object layer keys its barns) in cls_PTrie, std::map and
// std::unordered_map in one run, and prints the times per operation and the
// ratios to std::map. Keys spread over 64 classes with object ids counting
// up in each, and are inserted and looked up in a shuffled order. Every pass
// checks what it found.
//
//   cls_PTrieCompare [millions of keys]     default 1

#include "zqa_Bench.h"
#include "cls_PTrie.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

struct ClassObject {
  unsigned int m_ClassId;
  unsigned int m_ObjectId;
};

}  // namespace

template <>
struct cls_PTrieKeyWords<ClassObject> {
  static void ToWords(ClassObject const& key, std::uint32_t (&words)[2]) {
    words[0] = key.m_ObjectId;
    words[1] = key.m_ClassId;
  }
};

namespace {

constexpr unsigned int kClasses = 64;
constexpr unsigned int kFirstClassId = 0x230010;
constexpr int kRepeats = 3;

std::uint64_t Packed(ClassObject key) { return std::uint64_t{key.m_ClassId} << 32 | key.m_ObjectId; }

std::vector<ClassObject> Keys(long long count) {
  std::vector<ClassObject> keys;
  keys.reserve(static_cast<std::size_t>(count));
  for (long long index = 0; index < count; ++index) {
    keys.push_back({kFirstClassId + static_cast<unsigned int>(index % kClasses), static_cast<unsigned int>(index / kClasses)});
  }
  std::shuffle(keys.begin(), keys.end(), std::mt19937(2024));
  return keys;
}

// The value stored under a key, so that a lookup can be checked.
int ValueOf(ClassObject key) { return static_cast<int>(key.m_ObjectId ^ key.m_ClassId); }

// Insert times go to writeSeconds, lookup times to readSeconds.
zqa_PassTimes TriePass(std::vector<ClassObject> const& keys, std::vector<ClassObject> const& probes) {
  zqa_PassTimes result{};
  cls_PTrie<ClassObject, int, 2> trie;
  result.writeSeconds = zqa_Seconds([&] {
    for (ClassObject key : keys) trie.Insert(key, ValueOf(key));
  });
  zqa_Check(trie.Size() == static_cast<int>(keys.size()), "trie size");
  long long found = 0;
  result.readSeconds = zqa_Seconds([&] {
    for (ClassObject key : probes) {
      auto const leaf = trie.ConstGetPtr(key);
      if (leaf != nullptr && leaf->Value() == ValueOf(key)) ++found;
    }
  });
  zqa_Check(found == static_cast<long long>(probes.size()), "trie lookups");
  return result;
}

template <class Map>
zqa_PassTimes MapPass(std::vector<ClassObject> const& keys, std::vector<ClassObject> const& probes) {
  zqa_PassTimes result{};
  Map map;
  result.writeSeconds = zqa_Seconds([&] {
    for (ClassObject key : keys) map[Packed(key)] = ValueOf(key);
  });
  zqa_Check(map.size() == keys.size(), "map size");
  long long found = 0;
  result.readSeconds = zqa_Seconds([&] {
    for (ClassObject key : probes) {
      auto const entry = map.find(Packed(key));
      if (entry != map.end() && entry->second == ValueOf(key)) ++found;
    }
  });
  zqa_Check(found == static_cast<long long>(probes.size()), "map lookups");
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  long long const millions = argc > 1 ? std::atoll(argv[1]) : 1;
  zqa_Check(millions > 0 && millions < 2000, "millions of keys");
  long long const count = millions * 1000000;
  std::vector<ClassObject> const keys = Keys(count);
  std::vector<ClassObject> probes = keys;
  std::shuffle(probes.begin(), probes.end(), std::mt19937(7));

  zqa_PassTimes const ordered =
      zqa_Best(kRepeats, [&] { return MapPass<std::map<std::uint64_t, int> >(keys, probes); });
  zqa_PassTimes const hashed =
      zqa_Best(kRepeats, [&] { return MapPass<std::unordered_map<std::uint64_t, int> >(keys, probes); });
  zqa_PassTimes const trie = zqa_Best(kRepeats, [&] { return TriePass(keys, probes); });

  double const operations = static_cast<double>(count);
  std::printf("%lld million (class id, object id) keys in %u classes, shuffled, best of %d\n", millions, kClasses,
              kRepeats);
  std::printf("%-24s %12s %12s %12s %12s\n", "", "insert ns", "lookup ns", "insert ratio", "lookup ratio");
  auto line = [&](char const* name, zqa_PassTimes const& r) {
    std::printf("%-24s %12.0f %12.0f %12.2f %12.2f\n", name, r.writeSeconds / operations * 1e9,
                r.readSeconds / operations * 1e9, ordered.writeSeconds / r.writeSeconds,
                ordered.readSeconds / r.readSeconds);
  };
  line("std::map", ordered);
  line("std::unordered_map", hashed);
  line("cls_PTrie", trie);
  return 0;
}
