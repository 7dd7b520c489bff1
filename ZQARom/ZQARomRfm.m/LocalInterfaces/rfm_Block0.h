#ifndef rfm_Block0_h
#define rfm_Block0_h

// Fixed places in the first block of a database file that more than one
// layer reads.
//
//  offset  size  content
//     500    12  transfer check record: 4 marker bytes, physical length as a double
//     512     4  flush count, raised by every flush of a writer
//     516     4  creation time (low 32 bits)
constexpr int kRfmFtpRecordOffset = 500;
constexpr int kRfmFlushCountOffset = 512;
constexpr int kRfmCreationTimeOffset = 516;

#endif
