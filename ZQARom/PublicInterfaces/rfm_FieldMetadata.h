#ifndef rfm_FieldMetadata_h
#define rfm_FieldMetadata_h

#include "cow_String.h"
#include "mem_Alloc.h"
#include "rfm_Type.h"

class rfm_IOBuffer;

// One field of a table's description: its name, type and index. A field
// that the program defines and the file's table lacks is not present: it
// takes no room in rows and every access to it fails.
class ZQA_EXPORT rfm_FieldMetadata : public mem_AllocationOperators {
public:
  rfm_FieldMetadata() = default;
  rfm_FieldMetadata(cow_String const& name, rfm_Type type, int index, int present = 1)
      : m_Name(name), m_Type(type), m_Index(index), m_Present(present) {}
  virtual ~rfm_FieldMetadata() = default;

  cow_String const& Name() const { return m_Name; }
  rfm_Type Type() const { return m_Type; }
  int Index() const { return m_Index; }
  int Present() const { return m_Present; }
  void SetIndex(int index) { m_Index = index; }
  void SetPresent(int present) { m_Present = present; }

  // The field's part of a stored table description: type, then name.
  virtual void Dump(rfm_IOBuffer& buffer) const;

private:
  cow_String m_Name;
  rfm_Type m_Type = rfm_TypeNone;
  int m_Index = -1;
  int m_Present = 1;
};

#endif
