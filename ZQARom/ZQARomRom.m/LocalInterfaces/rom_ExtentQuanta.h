#ifndef rom_ExtentQuanta_h
#define rom_ExtentQuanta_h

#include "cls_ExtQuant.h"

// The names under which an application sets the extent quanta of the
// collections' stores (cls_ExtQuant), and the quanta they have otherwise.
inline constexpr char kRomQuantumArrayBool[] = "EXTENT_QUANTUM_ARRAY_BOOL";
inline constexpr char kRomQuantumArrayDouble[] = "EXTENT_QUANTUM_ARRAY_DOUBLE";
inline constexpr char kRomQuantumArrayFloat[] = "EXTENT_QUANTUM_ARRAY_FLOAT";
inline constexpr char kRomQuantumArrayInt[] = "EXTENT_QUANTUM_ARRAY_INT";
inline constexpr char kRomQuantumArrayString[] = "EXTENT_QUANTUM_ARRAY_STRING";
inline constexpr char kRomQuantumArrayUint[] = "EXTENT_QUANTUM_ARRAY_UINT";
constexpr int kRomArrayQuantumDefault = 8;
inline constexpr char kRomQuantumColList[] = "EXTENT_QUANTUM_COL_LIST";
constexpr int kRomColListQuantumDefault = 512;
// Maps to objects: an agent's table grows by 512 rows, an int-keyed
// writer's or reader's by 1024, a string-keyed one's by 512.
inline constexpr char kRomQuantumColMap[] = "EXTENT_QUANTUM_COL_MAP";
constexpr int kRomColMapQuantumDefault = 512;
constexpr int kRomColMapIntQuantumDefault = 1024;
// Maps to values.
inline constexpr char kRomQuantumColInt2Double[] = "EXTENT_QUANTUM_COL_INT2DOUBLE";
inline constexpr char kRomQuantumColInt2Float[] = "EXTENT_QUANTUM_COL_INT2FLOAT";
inline constexpr char kRomQuantumColInt2Int[] = "EXTENT_QUANTUM_COL_INT2INT";
inline constexpr char kRomQuantumColInt2Uint[] = "EXTENT_QUANTUM_COL_INT2UINT";
inline constexpr char kRomQuantumColInt2String[] = "EXTENT_QUANTUM_COL_INT2STRING";
inline constexpr char kRomQuantumColString2Double[] = "EXTENT_QUANTUM_COL_STRING2DOUBLE";
inline constexpr char kRomQuantumColString2Float[] = "EXTENT_QUANTUM_COL_STRING2FLOAT";
inline constexpr char kRomQuantumColString2Int[] = "EXTENT_QUANTUM_COL_STRING2INT";
inline constexpr char kRomQuantumColString2Uint[] = "EXTENT_QUANTUM_COL_STRING2UINT";
inline constexpr char kRomQuantumColString2String[] = "EXTENT_QUANTUM_COL_STRING2STRING";
constexpr int kRomColMapValueQuantumDefault = 64;

// Looked up on every construction of a store, so that a setting applies to
// the stores opened after it.
inline int rom_ExtentQuantum(char const* name, int defaultQuantum) {
  return cls_ExtQuant::Instance().ExtentQuantum(name, defaultQuantum);
}

#endif
