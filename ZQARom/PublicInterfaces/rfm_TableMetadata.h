#ifndef rfm_TableMetadata_h
#define rfm_TableMetadata_h

#include "omi_Btree.h"
#include "rfm_FieldHandle.h"
#include "rfm_FieldMetadata.h"

#include <vector>

class rfm_IOBuffer;

using rfm_MapName2FieldMetadata = omi_Btree<cow_String, rfm_FieldMetadata>;

// A table's description: its name, its fields by name and by index, and the
// class version it was written under. The stored form, a record of the
// catalogue:
//
//  offset  size  content
//       0     4  record length, from this field's first byte to the end: 12 + 12 per field
//       4     8  table name, external string
//      12    12  per field, in name order: type (integer), name (external string)
//
// Only present fields are stored, so every reader computes the row size the
// writer used.
//
// Invariants: field indexes are unique and below the field count; the array
// by index points at the fields of the map.
class ZQA_EXPORT rfm_TableMetadata {
public:
  rfm_TableMetadata(cow_String const& name, int version);
  rfm_TableMetadata(rfm_TableMetadata const& other, int version);
  // A stored record, read at the buffer's location.
  rfm_TableMetadata(rfm_IOBuffer& buffer, int version);
  // A stored record reconciled with the program's fields: a field of both
  // takes the program's index (a type mismatch raises); a field only the
  // file has gets the next free index; a field only the program has is
  // kept with present 0.
  rfm_TableMetadata(rfm_IOBuffer& buffer, rfm_MapName2FieldMetadata requested, int version);
  rfm_TableMetadata(rfm_TableMetadata const& other);
  rfm_TableMetadata& operator=(rfm_TableMetadata const& other);

  int DefineIntField(cow_String const& name) { return DefineField(name, rfm_TypeInt); }
  int DefineFloatField(cow_String const& name) { return DefineField(name, rfm_TypeFloat); }
  int DefineDoubleField(cow_String const& name) { return DefineField(name, rfm_TypeDouble); }
  int DefineStringField(cow_String const& name) { return DefineField(name, rfm_TypeString); }
  int DefineHandleField(cow_String const& name) { return DefineField(name, rfm_TypeHandle); }
  // Adds a field with its own index; raises when the name is taken.
  void InsertField(rfm_FieldMetadata const& field);

  // The field named by handle, or an empty description when there is none.
  rfm_FieldMetadata const& GetFieldMD(rfm_FieldHandle const& handle) const;
  // Raises unless handle names a present field of type.
  void Verify(rfm_FieldHandle const& handle, rfm_Type type) const;
  // How rows of other may be appended to this table's: 0 not at all, 1 as
  // bytes, 2 field by field (handles or strings among the fields), 3 field by
  // field between different field sets.
  int CopyAllowed(rfm_TableMetadata const& other) const;
  void Dump(rfm_IOBuffer& buffer) const;

  cow_String const& TableName() const { return m_Name; }
  int FieldCount() const { return m_FieldCount; }
  int GetVersionNumber() const { return m_Version; }
  rfm_MapName2FieldMetadata const& FieldMap() const { return m_Fields; }

private:
  int DefineField(cow_String const& name, rfm_Type type);
  // Reads the record's length and name; answers the number of fields in it.
  int ReadHead(rfm_IOBuffer& buffer);
  rfm_FieldMetadata ReadField(rfm_IOBuffer& buffer);
  void BuildIndex();

  cow_String m_Name;
  int m_FieldCount = 0;
  rfm_MapName2FieldMetadata m_Fields;
  std::vector<rfm_FieldMetadata const*> m_ByIndex;
  int m_Version;
  rfm_FieldMetadata m_None;
};

#endif
