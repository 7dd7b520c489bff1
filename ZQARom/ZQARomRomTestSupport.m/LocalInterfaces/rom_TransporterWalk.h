#ifndef rom_TransporterWalk_h
#define rom_TransporterWalk_h

#include "cls_ClassRegistrar.h"
#include "cow_String.h"

#include <map>
#include <string>
#include <vector>

class rom_ClassBag;
class rom_TestElement;
class rom_TestHex8;
class rom_TestNode;
class rom_TestQuad4;
class rom_Transporter;
class cls_ClassMetadata;
struct rom_TestMaterial;
struct rom_TestNodeSet;

// Reads a transporter file as a program that reads every class of its
// model does, and writes down what it read as text: the header's form and
// numbers, whether the file holds classes older or newer than the
// registrar's, the class versions the catalogue records, and for each class
// asked for its table's name and every field of every row, each read by the
// column that the class bag maps the attribute to. The objects of the test
// model's classes (rom_TestModel) are then read as roots, every row of each
// table, as a program of the model reads them: each is written down with its
// values and the rows of the objects it refers to, which shows that each
// stored object exists once in memory. Damage surfaces as the library's
// exceptions, which the walk lets through.
class rom_TransporterWalk {
public:
  enum Access { kReadOnly, kForUpdate };

  // Opens the file at name with a transporter that knows registrar's
  // classes and walks classIds. For update, the transporter flushes at the
  // end, as a program that opened a file to change it does.
  static std::string Walk(cow_String const& name, cls_ClassRegistrar const& registrar,
                          std::vector<unsigned int> const& classIds, Access access);

private:
  void Line(std::string const& text) { m_Text.append(text).append("\n"); }
  void Rows(cls_ClassMetadata const& md, rom_ClassBag const& bag);
  // Reads every object of the model's class cid; no lines for other classes.
  void Objects(rom_Transporter& transporter, unsigned int cid);
  template <class T>
  void ObjectsOf(rom_Transporter& transporter, std::string (rom_TransporterWalk::*describe)(T const&) const);
  std::string Describe(rom_TestMaterial const& material) const;
  std::string Describe(rom_TestNode const& node) const;
  std::string Describe(rom_TestHex8 const& hex) const;
  std::string Describe(rom_TestQuad4 const& quad) const;
  std::string Describe(rom_TestNodeSet const& set) const;
  std::string DescribeElement(rom_TestElement const& element) const;
  // An object read before as the row it was read from; "null" for none.
  std::string Row(void const* object) const;

  std::string m_Text;
  // The objects read as roots: the barn keeps them for the transporter's life.
  std::map<void const*, std::string> m_Rows;
};

#endif
