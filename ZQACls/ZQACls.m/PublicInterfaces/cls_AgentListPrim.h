#ifndef cls_AgentListPrim_h
#define cls_AgentListPrim_h

class cls_PC;

// The live back-end of a container of values of type T in a database: it
// stays open while the container lives, reads and changes elements in place
// and grows the list at its end. The container that holds it decides when
// to delete it; the reference count is there for containers that share one.
template <class T>
class cls_AgentListPrim {
public:
  cls_AgentListPrim() = default;
  cls_AgentListPrim(cls_AgentListPrim const&) = delete;
  cls_AgentListPrim& operator=(cls_AgentListPrim const&) = delete;
  virtual ~cls_AgentListPrim() = default;

  // The number of elements, and of elements per logical row.
  virtual int Size() const = 0;
  virtual int Columns() const = 0;
  // Takes in what a writer flushed since; 0 when nothing changed.
  virtual int Snap() = 0;
  virtual int Flush() = 0;
  // count elements from element first on; storing past the end grows the
  // list. Fetch answers the number of elements read.
  virtual void Store(int first, int count, T const* values) = 0;
  virtual int Fetch(int first, int count, T* values) = 0;
  virtual void RefCountInc() = 0;
  virtual void RefCountDec() = 0;
  virtual int GetRefCount() const = 0;
  virtual bool ReadOnly() const = 0;
  // Enters container in the ring of its transporter, which flushes it and
  // disconnects it at the transporter's end.
  virtual void RegisterPC(cls_PC* container) const = 0;
};

#endif
