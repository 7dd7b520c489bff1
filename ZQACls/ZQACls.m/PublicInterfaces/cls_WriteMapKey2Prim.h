#ifndef cls_WriteMapKey2Prim_h
#define cls_WriteMapKey2Prim_h

#include "cow_String.h"

// One pass that pours a whole map from keys of type K (int or cow_String)
// to values of type T (double, float, int, unsigned int, cow_String) into
// its store, which starts empty: what a write memento's
// MakeWriteMap...2Prim answers. Write appends an entry; the writer does not
// look for repeated keys. The receiver deletes it when NeedsDeletion() says
// so.
template <class K, class T>
class cls_WriteMapKey2Prim {
public:
  cls_WriteMapKey2Prim() = default;
  cls_WriteMapKey2Prim(cls_WriteMapKey2Prim const&) = delete;
  cls_WriteMapKey2Prim& operator=(cls_WriteMapKey2Prim const&) = delete;
  virtual ~cls_WriteMapKey2Prim() = default;

  virtual bool NeedsDeletion() const { return true; }
  virtual void Write(K const& key, T const& value) = 0;
};

template <class T>
using cls_WriteMapInt2Prim = cls_WriteMapKey2Prim<int, T>;
template <class T>
using cls_WriteMapString2Prim = cls_WriteMapKey2Prim<cow_String, T>;

// The same into a table of int pairs, which its receiver always deletes.
class cls_WriteIntTableInt {
public:
  cls_WriteIntTableInt() = default;
  cls_WriteIntTableInt(cls_WriteIntTableInt const&) = delete;
  cls_WriteIntTableInt& operator=(cls_WriteIntTableInt const&) = delete;
  virtual ~cls_WriteIntTableInt() = default;

  virtual void Write(int const& key, int const& value) = 0;
};

#endif
