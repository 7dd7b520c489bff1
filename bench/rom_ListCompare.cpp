// Writes a list of doubles (10 million by default) as a member of one
// object, through the object layer's typed helper (rom_WriteObject), and
// reads the object back (rom_ReadObject), against the same values written
// to and read from an rfm_Array<double> of one field directly, each in one
// call. Both paths create the file, write, flush and close it, then open it
// read-only and read every value into new memory, where it is checked. Passes of the two paths
// alternate; the program prints the best and the median of each and the
// ratio of the medians, object layer / array.
//
//   rom_ListCompare [millions of doubles]     default 10; TMPDIR picks the folder

#include "zqa_Bench.h"
#include "cls_ClassRegistrar.h"
#include "cls_Persistent.h"
#include "cls_Uid.h"
#include "cow_COW.h"
#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rom_Objects.h"
#include "rom_Transporter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRepeats = 5;
// Both paths grow their array by the object layer's default quantum.
constexpr int kQuantum = 8;
char const kMagic[] = "MDL";

struct Results {
  static constexpr unsigned int kClassId = 0x01000301;
  cls_Uid uid;
  std::vector<double> values;
};

std::vector<double> Values(long long count) {
  std::vector<double> values(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i) * 0.5 - 3.0;
  return values;
}

zqa_PassTimes ArrayPass(std::string const& path, std::vector<double> const& values) {
  zqa_PassTimes times;
  int const count = static_cast<int>(values.size());
  rfm_Handle handle;
  ::unlink(path.c_str());
  times.writeSeconds = zqa_Seconds([&] {
    rfm_Database database =
        rfm_Database::Create(rfm_File::Open(path.c_str(), utl_FileAccessCreate, false), kMagic, "list", 0);
    rfm_Array<double, rfm_TypeDouble> array = database.ArrayDouble(1, kQuantum, 0);
    zqa_Check(array.Write(values.data(), count) == count, "array write");
    handle = array.Handle();
  });
  times.readSeconds = zqa_Seconds([&] {
    // Into new memory, as the object layer reads a list into a new vector.
    std::vector<double> back(values.size());
    rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic);
    rfm_Array<double, rfm_TypeDouble> array = database.ArrayDouble(handle, kQuantum, 0);
    zqa_Check(array.Length() == count, "array length");
    zqa_Check(array.Read(back.data(), count) == count, "array read");
    zqa_Check(std::memcmp(back.data(), values.data(), values.size() * sizeof(double)) == 0, "array values");
  });
  ::unlink(path.c_str());
  return times;
}

zqa_PassTimes ObjectPass(std::string const& path, cls_ClassRegistrar const& registrar,
                         cow_COW<Results> const& results) {
  zqa_PassTimes times;
  rom_CidOid row;
  ::unlink(path.c_str());
  times.writeSeconds = zqa_Seconds([&] {
    rom_Transporter transporter(registrar, rfm_File::Open(path.c_str(), utl_FileAccessCreate, false), kMagic, "list",
                                0, -1);
    row = rom_WriteObject(transporter, results);
  });
  std::vector<double> const& values = results.ConstGet()->values;
  times.readSeconds = zqa_Seconds([&] {
    rom_Transporter transporter(registrar, rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic, -1);
    cow_COW<Results> const read = rom_ReadObject<Results>(transporter, row);
    std::vector<double> const& back = read.ConstGet()->values;
    zqa_Check(back.size() == values.size(), "object list length");
    zqa_Check(std::memcmp(back.data(), values.data(), values.size() * sizeof(double)) == 0, "object list values");
  });
  ::unlink(path.c_str());
  return times;
}

double Median(std::vector<double> seconds) {
  std::sort(seconds.begin(), seconds.end());
  return seconds[seconds.size() / 2];
}

void Print(char const* what, std::vector<double> const& seconds, long long values) {
  double const best = *std::min_element(seconds.begin(), seconds.end());
  std::printf("  %-22s best %7.1f  median %7.1f  million doubles/s\n", what, values / best / 1e6,
              values / Median(seconds) / 1e6);
}

}  // namespace

int main(int argc, char** argv) {
  long long const millions = argc > 1 ? std::atoll(argv[1]) : 10;
  long long const count = millions * 1000000;
  zqa_Check(count > 0 && count < (1LL << 31), "a count of 1 to 2147 million doubles");
  cls_ClassRegistrar registrar;
  cls_Persistent<Results>("Results", Results::kClassId, 1)
      .Identity(&Results::uid)
      .Member(1, "Values", &Results::values)
      .Register(registrar);
  cow_COW<Results> results(new Results);
  results.Get()->values = Values(count);
  std::string const path = zqa_BenchPath("rom_ListCompare");

  std::vector<double> arrayWrite, arrayRead, objectWrite, objectRead;
  for (int pass = 0; pass < kRepeats; ++pass) {
    zqa_PassTimes const array = ArrayPass(path, results.ConstGet()->values);
    arrayWrite.push_back(array.writeSeconds);
    arrayRead.push_back(array.readSeconds);
    zqa_PassTimes const object = ObjectPass(path, registrar, results);
    objectWrite.push_back(object.writeSeconds);
    objectRead.push_back(object.readSeconds);
  }
  std::printf("a list of %lld doubles, %d passes of each path, alternating\n", count, kRepeats);
  Print("write rfm_Array", arrayWrite, count);
  Print("write object layer", objectWrite, count);
  Print("read rfm_Array", arrayRead, count);
  Print("read object layer", objectRead, count);
  std::printf("object layer / rfm_Array (medians): write %.2f, read %.2f\n", Median(arrayWrite) / Median(objectWrite),
              Median(arrayRead) / Median(objectRead));
  return 0;
}
