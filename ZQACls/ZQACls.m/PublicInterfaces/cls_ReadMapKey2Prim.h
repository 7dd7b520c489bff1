#ifndef cls_ReadMapKey2Prim_h
#define cls_ReadMapKey2Prim_h

#include "cow_String.h"

// One pass over a stored map from keys of type K (int or cow_String) to
// values of type T (double, float, int, unsigned int, cow_String), in the
// order its entries were written: what a read memento's MakeReadMap...2Prim
// answers. Next() reads the next entry; Read and ReadKey answer it. The
// receiver deletes the reader when NeedsDeletion() says so.
template <class K, class T>
class cls_ReadMapKey2Prim {
public:
  cls_ReadMapKey2Prim() = default;
  cls_ReadMapKey2Prim(cls_ReadMapKey2Prim const&) = delete;
  cls_ReadMapKey2Prim& operator=(cls_ReadMapKey2Prim const&) = delete;
  virtual ~cls_ReadMapKey2Prim() = default;

  virtual bool NeedsDeletion() const { return true; }
  // The number of stored entries.
  virtual int Size() = 0;
  // False past the last entry.
  virtual bool Next() = 0;
  virtual T const& Read() = 0;
  virtual K const& ReadKey() = 0;
};

template <class T>
using cls_ReadMapInt2Prim = cls_ReadMapKey2Prim<int, T>;
template <class T>
using cls_ReadMapString2Prim = cls_ReadMapKey2Prim<cow_String, T>;

// The same over a table of int pairs, which its receiver always deletes.
class cls_ReadIntTableInt {
public:
  cls_ReadIntTableInt() = default;
  cls_ReadIntTableInt(cls_ReadIntTableInt const&) = delete;
  cls_ReadIntTableInt& operator=(cls_ReadIntTableInt const&) = delete;
  virtual ~cls_ReadIntTableInt() = default;

  virtual int Size() = 0;
  virtual bool Next() = 0;
  virtual int const& Read() = 0;
  virtual int const& ReadKey() = 0;
};

#endif
