#ifndef rfm_Type_h
#define rfm_Type_h

// The types of the record store, in memory and on disk: field types, and
// the object types that rfm_Database::HandleType answers. 7 is not used.
enum rfm_Type {
  rfm_TypeNone = 0,
  rfm_TypeInt = 1,
  rfm_TypeHandle = 2,
  rfm_TypeFloat = 3,
  rfm_TypeDouble = 4,
  rfm_Offset = 5,
  rfm_TypeString = 6,
  rfm_TypeTable = 8,
  rfm_TypeStream = 9,
  rfm_TypeSpace = 10,
  rfm_NumberOfTypes = 11,
};

#endif
