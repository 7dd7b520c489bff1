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

// Looked up on every construction of a store, so that a setting applies to
// the stores opened after it.
inline int rom_ExtentQuantum(char const* name, int defaultQuantum) {
  return cls_ExtQuant::Instance().ExtentQuantum(name, defaultQuantum);
}

#endif
