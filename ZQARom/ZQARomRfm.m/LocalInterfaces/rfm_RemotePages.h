#ifndef rfm_RemotePages_h
#define rfm_RemotePages_h

#include "omi_Swapper.h"

// The conversation between a remote file and the file assistant that serves
// it, over the assistant's standard input and output. Both sides include
// this header, so the numbers below are spelled once.
//
// Numbers are big-endian; Schar and Uchar take 1 byte, Short 2, Int 4,
// Int64 8.
//
// Opening, in this order:
//   client: Uchar key length, the key's bytes
//   server: Short version it speaks
//   client: Short version agreed (the lower of the two)
//   client: Int page size in bytes
//
// Then requests, each opening with a Schar command, until the client closes
// the assistant's input:
//
//   command  request after the command           reply
//   1        -                                    ack, status block, Int64 file length
//   2        Short n, n x Int64 pages dropped,    ack, status block, Int data length,
//            Int64 page wanted, Int page size     the data bytes
//   3        -                                    ack, status block
//
// The acknowledgement is the command's own number, so a reader that has
// lost its place in the conversation notices at once. A status block is a
// Schar status (an rfm_FileStatus value); when it is 2 (the file changed),
// an Int n and n x Int64 start offsets of pages the client holds that are
// now stale. Pages dropped by the client are ones it no longer holds, which
// the assistant stops watching. A page starts at a multiple of the page size
// and holds at most a page of the file's bytes; a shorter one ends the file.
//
// The assistant reports failures as lines on its standard error that begin
// with kAssistantErrorPrefix, and ends.
namespace rfm_RemotePages {

// The one version both sides speak. A new version goes with a new number,
// and each side accepts the lower of its own and the other's only when it
// still speaks that one.
constexpr short kProtocolVersion = 1;
constexpr int kEndType = omi_BigEndian;

enum Command : signed char {
  kCommandFileLength = 1,
  kCommandReadPage = 2,
  kCommandFileStatus = 3,
};

// The program that serves a file, found through PATH.
constexpr char kAssistantProgram[] = "rfmT_FileAssistant.exe";
constexpr char kAssistantErrorPrefix[] = "assistant,";

// The most pages one request may name as dropped: the count travels as a
// Short.
constexpr int kMostDroppedPages = 32767;
// A page size the assistant refuses beyond, so that no request can make it
// allocate without bound.
constexpr int kLargestPageSize = 1 << 30;

}  // namespace rfm_RemotePages

#endif
