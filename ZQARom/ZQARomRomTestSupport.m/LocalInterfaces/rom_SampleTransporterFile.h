#ifndef rom_SampleTransporterFile_h
#define rom_SampleTransporterFile_h

#include "cls_ClassRegistrar.h"
#include "rfm_File.h"
#include "rfm_Handle.h"

#include <vector>

// A small transporter file for the tests and fuzz targets that damage
// object-layer files and read them back. Every class of rom_TestClasses and
// the object layer's ##InternalList have been used, so the catalogue has a
// row for each class that stores something (the marker class stores
// nothing and has none). Each class table holds a few rows written by the
// columns the class bag maps, some fields left out so that presence bits
// differ from row to row; the rows of the derived classes name rows of their
// base class's table, and list columns name an int array of the file.
//
// The content is fixed: writing it twice gives the same bytes.
class rom_SampleTransporterFile {
public:
  static constexpr char kMagic[] = "ROMS";

  // What the sample holds beside its header (handle 4) and catalogue
  // (handle 5): the class tables, in the order of the catalogue's rows, and
  // the array that the lists name.
  struct Contents {
    struct ClassTable {
      unsigned int m_ClassId;
      rfm_Handle m_Handle;
    };
    std::vector<ClassTable> m_Tables;
    rfm_Handle m_Array;
  };

  // The classes the sample uses: rom_TestClasses::kAll, then ##InternalList.
  static std::vector<unsigned int> Classes();

  // Writes the sample into file, which must be new, through a transporter
  // with registrar, which must hold rom_TestClasses; flushes and closes it.
  static Contents Write(cls_ClassRegistrar const& registrar, rfm_File const& file);
};

#endif
