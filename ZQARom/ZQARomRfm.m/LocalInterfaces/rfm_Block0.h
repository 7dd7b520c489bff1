#ifndef rfm_Block0_h
#define rfm_Block0_h

// The first block of a database file. Integers are 32-bit in the file's
// byte order.
//
//  offset  size  content
//       0     8  magic: "ZKRR", then up to four characters of the application's magic, zero-filled
//       8     4  format version, written as 12
//      12   484  description, zero-filled
//     496     4  written 0 at creation and again on closing; never read
//     500    12  transfer check record: 4 marker bytes, physical length as a double
//     512     4  flush count, raised by every flush of a writer
//     516     4  creation time (low 32 bits); present from version 12
//     520   504  zero, reserved
//
// The first linkage group follows at offset 1024.
constexpr int kRfmBlock0Size = 1024;
constexpr int kRfmMagicOffset = 0;
constexpr int kRfmMagicSize = 8;
constexpr int kRfmVersionOffset = 8;
constexpr int kRfmDescriptionOffset = 12;
constexpr int kRfmDescriptionSize = 484;
constexpr int kRfmClosingWordOffset = 496;
constexpr int kRfmFtpRecordOffset = 500;
constexpr int kRfmFlushCountOffset = 512;
constexpr int kRfmCreationTimeOffset = 516;

constexpr char kRfmDatabaseMagic[] = "ZKRR";
constexpr char kRfmOldFormatMagic[] = "ZKRDFM";
// Application magics are cut to this many characters.
constexpr int kRfmApplicationMagicSize = 4;
constexpr int kRfmFormatVersion = 12;
constexpr int kRfmOldestReadableVersion = 11;
constexpr int kRfmFirstVersionWithCreationTime = 12;

#endif
