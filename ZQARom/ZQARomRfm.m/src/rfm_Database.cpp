#include "rfm_Database.h"

#include "rfm_DatabaseReprFile.h"
#include "rfm_Space.h"

rfm_Database rfm_Database::Create(rfm_File const& file, cow_String const& magic, cow_String const& description,
                                  long creationTime) {
  auto* repr = new rfm_DatabaseReprFile(file);
  // Owned before it is filled: a failed Create ends it without writing more.
  rfm_Database database(repr);
  repr->Create(magic, description, creationTime);
  return database;
}

rfm_Database rfm_Database::Open(rfm_File const& file, cow_String const& magic) {
  auto* repr = new rfm_DatabaseReprFile(file);
  rfm_Database database(repr);
  repr->Open(magic);
  return database;
}

bool rfm_Database::IsMagic(rfm_File const& file, cow_String const& magic) {
  return rfm_DatabaseReprFile::IsMagic(file, magic);
}

long rfm_Database::GetCreationTime(rfm_File const& file) { return rfm_DatabaseReprFile::GetCreationTime(file); }

rfm_Space rfm_Database::Space(int quantum) const { return rfm_Space(Repr().Space(quantum), *this); }

rfm_Space rfm_Database::Space(rfm_Handle const& handle, int quantum) const {
  return rfm_Space(Repr().Space(handle, quantum), *this);
}
