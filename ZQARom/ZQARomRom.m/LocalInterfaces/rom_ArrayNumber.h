#ifndef rom_ArrayNumber_h
#define rom_ArrayNumber_h

#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_Handle.h"
#include "rom_ExtentQuanta.h"
#include "rom_ListStore.h"
#include "rom_Transporter.h"

#include <algorithm>
#include <type_traits>

// How each kind of number is kept in an array of the record store, which
// has arrays of int, float and double only.
struct rom_IntStore {
  using Array = rfm_Array<int, rfm_TypeInt>;
  static Array Open(rfm_Database const& database, rfm_Handle const& handle, int quantum) {
    return database.ArrayInt(handle, quantum, 0);
  }
  static Array New(rfm_Database const& database, int quantum) { return database.ArrayInt(1, quantum, 0); }
};
struct rom_FloatStore {
  using Array = rfm_Array<float, rfm_TypeFloat>;
  static Array Open(rfm_Database const& database, rfm_Handle const& handle, int quantum) {
    return database.ArrayFloat(handle, quantum, 0);
  }
  static Array New(rfm_Database const& database, int quantum) { return database.ArrayFloat(1, quantum, 0); }
};
struct rom_DoubleStore {
  using Array = rfm_Array<double, rfm_TypeDouble>;
  static Array Open(rfm_Database const& database, rfm_Handle const& handle, int quantum) {
    return database.ArrayDouble(handle, quantum, 0);
  }
  static Array New(rfm_Database const& database, int quantum) { return database.ArrayDouble(1, quantum, 0); }
};

// A list's store of numbers of type T: an array of one field, one element a
// row, in the store Store. int, float and double are kept as they are;
// unsigned int as the int of the same bits (the record store has no
// unsigned arrays, and every reader of int arrays reads these); bool as the
// int 0 or 1, four bytes an element. The quantum is looked up by name on
// every construction.
template <class T, class Store, char const* QuantumName>
class rom_ArrayNumber {
public:
  // The array at handle in transporter's file, which must have one field a
  // row.
  rom_ArrayNumber(rom_Transporter const& transporter, rfm_Handle const& handle)
      : m_Array(Store::Open(transporter.Database(), handle, Quantum())) {
    rom_ListStore::CheckOneField(transporter, handle, m_Array.FieldCount());
  }
  // A new array.
  explicit rom_ArrayNumber(rom_Transporter const& transporter)
      : m_Array(Store::New(transporter.Database(), Quantum())) {}

  // Both move up to count elements from the current position on and answer
  // how many they moved.
  int Read(T* values, int count) const {
    if constexpr (std::is_same_v<T, bool>) {
      int done = 0;
      int buffer[kChunk];
      while (done < count) {
        int const want = std::min(count - done, kChunk);
        int const read = m_Array.Read(buffer, want);
        for (int i = 0; i < read; ++i) values[done + i] = buffer[i] != 0;
        done += read;
        if (read < want) break;
      }
      return done;
    } else if constexpr (std::is_same_v<T, unsigned int>) {
      // An unsigned int may be read through its signed type.
      return m_Array.Read(reinterpret_cast<int*>(values), count);
    } else {
      return m_Array.Read(values, count);
    }
  }
  int Write(T const* values, int count) const {
    if constexpr (std::is_same_v<T, bool>) {
      int buffer[kChunk];
      for (int done = 0; done < count;) {
        int const part = std::min(count - done, kChunk);
        for (int i = 0; i < part; ++i) buffer[i] = values[done + i] ? 1 : 0;
        m_Array.Write(buffer, part);
        done += part;
      }
      return count;
    } else if constexpr (std::is_same_v<T, unsigned int>) {
      return m_Array.Write(reinterpret_cast<int const*>(values), count);
    } else {
      return m_Array.Write(values, count);
    }
  }

  void Seek(int element) const { m_Array.Seek(element); }
  int Length() const { return m_Array.Length(); }
  void Truncate(int elements) const { m_Array.Truncate(elements); }
  int Snap() const { return m_Array.Snap(); }
  int Flush() const { return m_Array.Flush(); }
  rfm_Handle Handle() const { return m_Array.Handle(); }

private:
  // Elements a bool array converts at a time.
  static constexpr int kChunk = 1024;

  static int Quantum() { return rom_ExtentQuantum(QuantumName, kRomArrayQuantumDefault); }

  typename Store::Array m_Array;
};

using rom_ArrayInt = rom_ArrayNumber<int, rom_IntStore, kRomQuantumArrayInt>;
using rom_ArrayUint = rom_ArrayNumber<unsigned int, rom_IntStore, kRomQuantumArrayUint>;
using rom_ArrayBool = rom_ArrayNumber<bool, rom_IntStore, kRomQuantumArrayBool>;
using rom_ArrayFloat = rom_ArrayNumber<float, rom_FloatStore, kRomQuantumArrayFloat>;
using rom_ArrayDouble = rom_ArrayNumber<double, rom_DoubleStore, kRomQuantumArrayDouble>;

#endif
