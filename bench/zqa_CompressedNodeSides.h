#ifndef zqa_CompressedNodeSides_h
#define zqa_CompressedNodeSides_h

// The compressed comparison of rfm_TableCompare: node result rows written
// through rfm_Table's bulk path into a compressed database file and read
// back, against an HDF5 compound
// dataset compressed by deflate at level 6, alone and after the shuffle
// filter. Every value read is checked; the size of the file each side
// wrote last is kept for the report.

#include "zqa_Bench.h"
#include "zqa_NodeField.h"

#include <map>
#include <string>

class zqa_CompressedNodeSides {
public:
  zqa_CompressedNodeSides(std::string const& base, int rows) : m_Base(base), m_Rows(rows) {}

  // Adds the sides "compressed", "hdf5-deflate" and "hdf5-shuffle".
  void AddSides(zqa_Rounds& rounds);
  void PrintRates(zqa_Rounds const& rounds) const;
  void PrintRatios(zqa_Rounds const& rounds) const;

private:
  void CompressedSide(zqa_Measures& measures);
  void Hdf5Side(std::string const& side, bool shuffle, zqa_Measures& measures);

  std::string m_Base;
  int m_Rows;
  zqa_NodeField m_Field;
  std::map<std::string, long long> m_FileBytes;
};

#endif
