// Writes typed data into a file through rfm_File, reads it back and prints
// what it read: the smallest tour of the library's file layer.

#include "ZQARomCore.h"
#include "rfm_File.h"
#include "rfm_FileException.h"

#include <cstdio>
#include <exception>
#include <cstdlib>
#include <string>
#include <unistd.h>

int main(int argc, char** argv) {
  std::string name = argc > 1 ? argv[1] : "/tmp/zqarom-demo-" + std::to_string(::getpid()) + ".bin";
  int modules = 0;
  ZQARomCore_initialize(modules);
  int status = EXIT_SUCCESS;
  try {
    {
      rfm_File file = rfm_File::Open(name.c_str(), utl_FileAccessCreate, false);
      file.WriteFixedString("ZQADEMO", 8);
      file.WriteInt(3);
      double const displacements[3] = {0.125, -2.5, 1e-9};
      file.WriteDoubleArray(displacements, 3);
      file.WriteFloat(273.15f);
    }
    rfm_File file = rfm_File::Open(name.c_str(), utl_FileAccessRead, false);
    std::printf("file %s, %lld bytes\n", name.c_str(), static_cast<long long>(file.Length()));
    std::printf("tag          %s\n", file.ReadFixedString(8).CStr());
    int count = file.ReadInt();
    double values[3];
    int got = file.ReadDoubleArray(values, count);
    std::printf("doubles      %d:", got);
    for (int i = 0; i < got; ++i) std::printf(" %g", values[i]);
    std::printf("\ntemperature  %.2f\n", file.ReadFloat());
  } catch (rfm_FileException const& e) {
    std::fprintf(stderr, "%s\n", e.what());
    status = EXIT_FAILURE;
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s\n", e.what());
    status = EXIT_FAILURE;
  }
  if (argc <= 1) std::remove(name.c_str());
  ZQARomCore_finalize(modules);
  return status;
}
