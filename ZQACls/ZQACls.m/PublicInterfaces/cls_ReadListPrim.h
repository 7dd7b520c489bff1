#ifndef cls_ReadListPrim_h
#define cls_ReadListPrim_h

// One pass over a stored list of values of type T (int, unsigned int,
// double, float, cow_String, bool), from its first element on: what a read
// memento's MakeReadListPrim answers. The receiver deletes it when
// NeedsDeletion() says so. Columns() is the number of elements in one
// logical row of the list, as the owner stored it; the elements follow each
// other flat.
template <class T>
class cls_ReadListPrim {
public:
  cls_ReadListPrim() = default;
  cls_ReadListPrim(cls_ReadListPrim const&) = delete;
  cls_ReadListPrim& operator=(cls_ReadListPrim const&) = delete;
  virtual ~cls_ReadListPrim() = default;

  virtual bool NeedsDeletion() const { return true; }
  // The number of elements.
  virtual int Size() = 0;
  virtual int Columns() = 0;
  // Reads the next element into the current one; Read() answers it.
  virtual void Next() = 0;
  virtual T const& Read() = 0;
  // Reads up to count elements from the current position; answers how many.
  virtual int Read(T* values, int count) = 0;
};

#endif
