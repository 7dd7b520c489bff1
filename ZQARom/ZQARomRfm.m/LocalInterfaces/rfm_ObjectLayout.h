#ifndef rfm_ObjectLayout_h
#define rfm_ObjectLayout_h

#include "rfm_HandleConverter.h"
#include "rfm_Type.h"

// What every reader of the stored objects' formats shares with the code
// that writes them (each format is described there): the size of each
// object's header, the words before its rows or items, magic first; and
// the bytes that a value takes in a table row, an array row or a stream
// item.
constexpr int kRfmTableHeaderSize = 12;         // magic, flush count, metadata handle
constexpr int kRfmArrayHeaderSize = 16;         // magic, change count, element type, fields per row
constexpr int kRfmTaggedStreamHeaderSize = 8;   // magic, change count
// The widest element is 8 bytes: an array row of this many of them still fits an int.
constexpr int kRfmArrayMaxFieldsPerRow = 0x7fffffff / 8;

// Bytes a value of type takes, 0 for a type no value can have (any int is
// welcome: a checker asks with what a file holds). A string is stored as
// its reference in the pool, of externalStringSize bytes.
constexpr int rfm_ValueSize(int type, int externalStringSize) {
  switch (type) {
    case rfm_TypeInt:
    case rfm_TypeFloat:
      return 4;
    case rfm_TypeDouble:
      return 8;
    case rfm_TypeHandle:
      return rfm_HandleConverter::ExternalSize();
    case rfm_TypeString:
      return externalStringSize;
    default:
      return 0;
  }
}

#endif
