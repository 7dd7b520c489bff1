#ifndef rom_TestTransporterDamage_h
#define rom_TestTransporterDamage_h

#include "rfm_TestDamage.h"
#include "rom_SampleTransporterFile.h"

#include <string>
#include <vector>

// Damage to a transporter file (rom_SampleTransporterFile), for the
// damaged-file tests of the object layer: the record store's own recipes
// (DatabaseDamage, aimed at the class tables and the array), then the
// header stream and the catalogue field by field, each case classed by what
// its bytes mean to the object layer, and the damage that only the object
// layer can tell: a root word of another header form, header items of the
// wrong type, catalogue rows naming no table, a table that is no table, the
// catalogue or another class's table, duplicated rows, class ids of no
// class, of the internal classes or of another class, and rows without a
// Class Version; and the references of the model's objects, which may lead
// to no row, to a row of the wrong class, to another row or to nothing.
std::vector<DamageCase> TransporterDamage(std::string const& bytes,
                                          rom_SampleTransporterFile::Contents const& contents);

#endif
