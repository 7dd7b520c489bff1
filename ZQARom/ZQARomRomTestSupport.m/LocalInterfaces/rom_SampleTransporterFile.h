#ifndef rom_SampleTransporterFile_h
#define rom_SampleTransporterFile_h

#include "cls_ClassRegistrar.h"
#include "rfm_File.h"
#include "rfm_Handle.h"

#include <cstddef>
#include <string>
#include <vector>

// A small transporter file for the tests and fuzz targets that damage
// object-layer files and read them back. Every class of rom_TestClasses, the
// object layer's ##InternalList and every class of the test model
// (rom_TestModel, its names after kModelPrefix) have been used, so the
// catalogue has a row for each class that stores something (the marker
// classes store nothing and have none). Each table of rom_TestClasses holds
// a few rows written by the columns the class bag maps, some fields left out
// so that presence bits differ from row to row; the rows of the derived
// classes name rows of their base class's table, and list columns name an
// int array of the file. The model's tables hold a model of a few dozen
// objects written as roots: nodes, elements of both kinds and the materials
// they share.
//
// The content is fixed: writing it twice gives the same bytes.
class rom_SampleTransporterFile {
public:
  static constexpr char kMagic[] = "ROMS";
  // Before the test model's class names, which rom_TestClasses uses too.
  static constexpr char kModelPrefix[] = "Fe";

  // What the sample holds beside its header (handle 4) and catalogue
  // (handle 5): the class tables, in the order of the catalogue's rows, and
  // the array that the lists name; and where the model's objects lead to
  // others, in the first and the last row of each of its tables.
  struct Contents {
    struct ClassTable {
      unsigned int m_ClassId;
      rfm_Handle m_Handle;
    };
    // A stored int of a row, at an offset in its table's bytes, with its
    // presence bit: the byte that holds the bit and the bit's mask.
    struct Stored {
      std::size_t m_At;
      std::size_t m_PresenceAt;
      unsigned char m_PresenceMask;
    };
    // A reference of an object's row: its object id and class id, which
    // lead to a row of the class m_Target, whose table has m_TargetRows
    // rows; or, without a class id (m_Base), the row of the object's base
    // class part.
    struct Reference {
      std::string m_What;
      rfm_Handle m_Table;
      unsigned int m_Target;
      int m_TargetRows;
      bool m_Base;
      Stored m_Oid;
      Stored m_ClassId;
    };
    std::vector<ClassTable> m_Tables;
    rfm_Handle m_Array;
    std::vector<Reference> m_References;
  };

  // The classes the sample uses: rom_TestClasses::kAll, ##InternalList,
  // then the test model's, each class after those its objects refer to.
  static std::vector<unsigned int> Classes();
  // Registers rom_TestClasses and the test model as the sample has them.
  static void Register(cls_ClassRegistrar& registrar);

  // Writes the sample into file, which must be new, through a transporter
  // with registrar, which must hold the classes Register registers; flushes
  // and closes it.
  static Contents Write(cls_ClassRegistrar const& registrar, rfm_File const& file);
};

#endif
