#ifndef cls_ClassRegistrar_h
#define cls_ClassRegistrar_h

#include "ZQABasExport.h"
#include "cls_ClassMetadata.h"
#include "cls_TypeAdapter.h"
#include "cow_String.h"

#include <map>
#include <memory>
#include <utility>

// An application's persistent classes: every registered version of every
// class, by class id and version. The registrar owns the metadata, which
// stays at its address until the class is deleted or the registrar goes, so
// the object layer may keep references to it. It must outlive every
// transporter that uses it, and is not changed while one reads it.
//
// A class's current version is its highest registered one; older versions
// are registered by conversion code that reads older files.
class ZQA_EXPORT cls_ClassRegistrar {
public:
  cls_ClassRegistrar();
  cls_ClassRegistrar(cls_ClassRegistrar const&) = delete;
  cls_ClassRegistrar& operator=(cls_ClassRegistrar const&) = delete;
  ~cls_ClassRegistrar();

  // Registers a version of a class, answering its metadata for the
  // attributes to be added. Registering a version already present raises.
  cls_ClassMetadata& CreateClassMD(cow_String const& name, unsigned int classId, int version,
                                   cls_ClassMetadata::Constructor ctor, unsigned int baseClassId);
  // The same for a C++ class T that the object layer builds and writes
  // itself (see cls_TypeAdapter).
  template <class T>
  cls_ClassMetadata& Register(cow_String const& name, unsigned int classId, int version, unsigned int baseClassId) {
    return AddClassMD(std::make_unique<cls_TypeAdapter<T>>(name, classId, version, baseClassId).release());
  }
  // Takes ownership of metadata (also when it raises, as for a version
  // already registered) and answers it.
  cls_ClassMetadata& AddClassMD(cls_ClassMetadata* metadata);
  // Forgets every version of the class; the name must be the class's.
  void DeleteClass(cow_String const& name, unsigned int classId);

  bool ClassIsPresent(unsigned int const& classId) const;
  // The current version of the class; raises for a class not registered.
  cls_ClassMetadata const& ConstGet(unsigned int const& classId) const;
  // The given version; raises when it is not registered.
  cls_ClassMetadata const& GetClassMetadata(unsigned int classId, int version) const;
  // The id of the class of that name, or cls_kNoClass.
  unsigned int GetClassID(cow_String const& name) const;
  // Version numbers of a class, -1 when there is none of the kind asked:
  // the highest; the highest below version; the lowest at or above version.
  int GetLastClassVersionNumber(unsigned int const& classId) const;
  int GetPreviousClassVersionNumber(unsigned int const& classId, int version) const;
  int GetFirstClassVersionNumberGREQ(unsigned int const& classId, int version) const;
  int ClassCount() const { return static_cast<int>(m_Classes.size()); }

private:
  using Versions = std::map<int, std::unique_ptr<cls_ClassMetadata>>;
  Versions const* Find(unsigned int classId) const;

  std::map<unsigned int, Versions> m_Classes;
};

#endif
