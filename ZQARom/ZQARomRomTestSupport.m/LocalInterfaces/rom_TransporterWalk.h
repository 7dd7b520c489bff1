#ifndef rom_TransporterWalk_h
#define rom_TransporterWalk_h

#include "cls_ClassRegistrar.h"
#include "cow_String.h"

#include <string>
#include <vector>

class rom_ClassBag;
class cls_ClassMetadata;

// Reads a transporter file as a program that reads every class of its
// model does, and writes down what it read as text: the header's form and
// numbers, whether the file holds classes older or newer than the
// registrar's, the class versions the catalogue records, and for each class
// asked for its table's name and every field of every row, each read by the
// column that the class bag maps the attribute to. Damage surfaces as the
// library's exceptions, which the walk lets through.
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

  std::string m_Text;
};

#endif
