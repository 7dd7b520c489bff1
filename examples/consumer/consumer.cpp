// Opens a file, writes an int and reads it back: exit status 0 when the
// value comes back.
#include "rfm_File.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  try {
    rfm_File::Open(argv[1], utl_FileAccessCreate, false)->WriteInt(1234567);
    int value = rfm_File::Open(argv[1], utl_FileAccessRead, false)->ReadInt();
    std::printf("read %d\n", value);
    return value == 1234567 ? 0 : 1;
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  }
}
