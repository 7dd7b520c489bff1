#ifndef rfm_FtpRecord_h
#define rfm_FtpRecord_h

// The transfer check record of a plain file (at offset 500 of block 0): a
// transfer in text mode changes a binary file's size, and the record tells.
// Readers of the record that stand outside the file layer take its layout
// from here.
//
//  offset  size  content
//       0     4  marker: written as zeros; 0A 00 0D 0A is accepted too
//       4     8  physical file length, IEEE double in the file's byte order
constexpr int kRfmFtpRecordSize = 12;
constexpr int kRfmFtpLengthOffset = 4;
constexpr unsigned char kRfmFtpMarker[4] = {0x0A, 0x00, 0x0D, 0x0A};

#endif
