#ifndef cls_WriteListPrim_h
#define cls_WriteListPrim_h

// One pass that pours a whole list of values of type T into its store,
// which starts empty: what a write memento's MakeWriteListPrim answers. The
// receiver deletes it when NeedsDeletion() says so.
template <class T>
class cls_WriteListPrim {
public:
  cls_WriteListPrim() = default;
  cls_WriteListPrim(cls_WriteListPrim const&) = delete;
  cls_WriteListPrim& operator=(cls_WriteListPrim const&) = delete;
  virtual ~cls_WriteListPrim() = default;

  virtual bool NeedsDeletion() const { return true; }
  // Appends one element, or count elements.
  virtual void Write(T const& value) = 0;
  virtual void Write(T const* values, int count) = 0;
};

#endif
