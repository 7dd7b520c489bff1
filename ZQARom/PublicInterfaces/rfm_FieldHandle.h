#ifndef rfm_FieldHandle_h
#define rfm_FieldHandle_h

#include "cow_String.h"

// How a caller names a field: by its index in the table's description (the
// fast road), or, with index -1, by its name.
class ZQA_EXPORT rfm_FieldHandle {
public:
  explicit rfm_FieldHandle(int index) : m_Index(index) {}
  rfm_FieldHandle(char const* name, int index) : m_Index(index), m_Name(name) {}
  rfm_FieldHandle(cow_String const& name, int index) : m_Index(index), m_Name(name) {}
  // The name is prefix followed by name.
  rfm_FieldHandle(cow_String const& prefix, char const* name, int index)
      : m_Index(index), m_Name(cow_String(prefix).Append(name)) {}

  bool ByIndex() const { return m_Index >= 0; }
  int Index() const { return m_Index; }
  cow_String const& Name() const { return m_Name; }

private:
  int m_Index;
  cow_String m_Name;
};

#endif
