#ifndef beam_collections_h
#define beam_collections_h

// Collections through the visitor interface: how a class that writes itself
// (DBWrite) stores a std::vector or std::map member, and how its reading
// constructor gets it back. A collection is a row of one of the object
// layer's collection classes (cls_CollectionClass.h) that the owner's row
// refers to; it has no identity of its own, so rewriting the owner writes
// the collection over in that same row. cls_CollectionWriteRow finds or
// makes that row, cls_CollectionReadRow finds it for reading.
//
// Reading answers an empty collection when the owner's row holds none: a
// table of an older class version without the member, a null reference, a
// collection row with nothing in it.

#include "cls_CollectionClass.h"
#include "cls_MementoRead.h"
#include "cls_MementoWrite.h"
#include "cls_PersistentCollection.h"
#include "cls_ReadListPrim.h"
#include "cls_ReadMapKey2Prim.h"
#include "cls_ReadVisitor.h"
#include "cls_Received.h"
#include "cls_WriteListPrim.h"
#include "cls_WriteMapKey2Prim.h"
#include "cls_WriteVisitor.h"
#include "cow_String.h"

#include <cstddef>
#include <map>
#include <memory>
#include <type_traits>
#include <vector>

// A list of values, columns elements in each of its logical rows.
template <class E>
void beam_WriteList(cls_WriteVisitor const& owner, cls_FieldHandle const& field, std::vector<E> const& values,
                    int columns) {
  cls_CollectionWriteRow const list(owner, field, cls_kListClass, cls_CollListPrim);
  if (list.Memento() == nullptr) return;
  cls_Received<cls_WriteListPrim<E>> writer(list.Memento()->MakeWriteListPrim(E(), columns));
  if (!writer || values.empty()) return;
  if constexpr (std::is_same_v<E, bool>) {
    // std::vector<bool> keeps no array of bool.
    for (bool const value : values) writer->Write(value);
  } else {
    writer->Write(values.data(), static_cast<int>(values.size()));
  }
}

// The list of values in field, and the number of elements in one of its
// logical rows (1 for no list).
template <class E>
std::vector<E> beam_ReadList(cls_ReadVisitor const& owner, cls_FieldHandle const& field, int& columns) {
  std::vector<E> values;
  columns = 1;
  cls_CollectionReadRow const list(owner, field, cls_kListClass);
  if (list.Memento() == nullptr) return values;
  cls_Received<cls_ReadListPrim<E>> reader(list.Memento()->MakeReadListPrim(E()));
  if (!reader) return values;
  columns = reader->Columns();
  int const size = reader->Size();
  if (size <= 0) return values;
  if constexpr (std::is_same_v<E, bool>) {
    for (int i = 0; i < size; ++i) {
      reader->Next();
      values.push_back(reader->Read());
    }
  } else {
    values.resize(static_cast<std::size_t>(size));
    values.resize(static_cast<std::size_t>(reader->Read(values.data(), size)));
  }
  return values;
}

template <class E>
std::vector<E> beam_ReadList(cls_ReadVisitor const& owner, cls_FieldHandle const& field) {
  int columns = 0;
  return beam_ReadList<E>(owner, field, columns);
}

// A map from names to doubles. A map's table keeps its entries in the
// order they were written, and the reader takes the first entry of a key.
inline void beam_WriteNamedValues(cls_WriteVisitor const& owner, cls_FieldHandle const& field,
                                  std::map<cow_String, double> const& values) {
  cls_CollectionWriteRow const map(owner, field, cls_kMapClass, cls_CollMapString2Prim);
  if (map.Memento() == nullptr) return;
  cls_Received<cls_WriteMapKey2Prim<cow_String, double>> writer(map.Memento()->MakeWriteMapString2Prim(double()));
  if (!writer) return;
  for (auto const& [name, value] : values) writer->Write(name, value);
}

inline std::map<cow_String, double> beam_ReadNamedValues(cls_ReadVisitor const& owner, cls_FieldHandle const& field) {
  std::map<cow_String, double> values;
  cls_CollectionReadRow const map(owner, field, cls_kMapClass);
  if (map.Memento() == nullptr) return values;
  cls_Received<cls_ReadMapKey2Prim<cow_String, double>> reader(map.Memento()->MakeReadMapString2Prim(double()));
  if (!reader) return values;
  while (reader->Next()) values.emplace(reader->ReadKey(), reader->Read());
  return values;
}

// An int table: a map from int to int in a table of int pairs. Its writer
// and reader are always the receiver's to delete.
inline void beam_WriteIntTable(cls_WriteVisitor const& owner, cls_FieldHandle const& field,
                               std::map<int, int> const& table) {
  cls_CollectionWriteRow const map(owner, field, cls_kMapClass, cls_CollIntTableInt);
  if (map.Memento() == nullptr) return;
  std::unique_ptr<cls_WriteIntTableInt> const writer(map.Memento()->MakeWriteIntTableInt(int()));
  if (writer == nullptr) return;
  for (auto const& [key, value] : table) writer->Write(key, value);
}

inline std::map<int, int> beam_ReadIntTable(cls_ReadVisitor const& owner, cls_FieldHandle const& field) {
  std::map<int, int> table;
  cls_CollectionReadRow const map(owner, field, cls_kMapClass);
  if (map.Memento() == nullptr) return table;
  std::unique_ptr<cls_ReadIntTableInt> const reader(map.Memento()->MakeReadIntTableInt(int()));
  if (reader == nullptr) return table;
  while (reader->Next()) table.emplace(reader->ReadKey(), reader->Read());
  return table;
}

#endif
