#ifndef rfm_ObjectMagic_h
#define rfm_ObjectMagic_h

#include <cstdint>

// The first word of each kind of stored object, and the handles of the
// objects every database has.
constexpr std::uint32_t kRfmStringPoolMagic = 0xAAFFBBEE;
constexpr std::uint32_t kRfmMetadataMagic = 0xFAAAEBBB;
constexpr std::uint32_t kRfmTableMagic = 0xAAAFBBBE;
constexpr std::uint32_t kRfmTaggedStreamMagic = 0xFAAFEBBE;
constexpr std::uint32_t kRfmArrayMagic = 0xFFFAEEEB;
// The bytes by which an object tells its kind (rfm_Database::HandleType):
// the magic, then for an array its change count and element type. An
// object shorter than this is a plain space, whatever its first word.
constexpr int kRfmObjectKindSize = 12;

constexpr int kRfmStringPoolHandle = 1;
constexpr int kRfmReservedHandle = 2;  // created empty at creation and never used
constexpr int kRfmMetadataHandle = 3;
constexpr int kRfmRootTableHandle = 4;
constexpr int kRfmRootTableHandle2 = 5;

#endif
