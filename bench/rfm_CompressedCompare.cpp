// First, reading: the bytes of a plain database file of finite-element node
// results, written as a compressed rfm_File and read back in calls of 64 KiB,
// against zlib's own uncompress of the same bytes cut into 64 KiB segments
// (and libdeflate's, when the library is built with it), in interleaved
// passes; prints per side the min and median speed and the median processor
// time (user + system, all threads), and the ratios of the medians.
//
// Then writes a table of node results (id, coordinates on a grid, a smooth
// displacement field) into a compressed database file and reads it back,
// checking every value; writes the same rows into a plain database file,
// and compresses and uncompresses that file's bytes in 64 KiB blocks with
// zlib at level 6, timing only the zlib calls; moves the same bytes through
// a compressed rfm_File alone. Prints the throughputs in logical MiB (row
// bytes for the tables, file bytes for the others), the ratios of the
// compressed file's to zlib's, and the sizes. Then writes a database four
// times as large into a compressed file in a child process that does only
// that, and prints the child's peak resident memory against its aim.
//
//   rfm_CompressedCompare [MiB] [only]   default 256; the memory pass writes 4 x MiB
//
// With "only" given as read, compressed, plain, container or memory, runs
// that pass alone (for a profiler) and prints its times. TMPDIR picks the
// folder.

#include "zqa_Bench.h"
#include "rfm_Database.h"
#include "rfm_Table.h"

#include <zlib.h>
#ifdef ZQA_WITH_LIBDEFLATE
#include <libdeflate.h>
#endif

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr long long kMiB = 1 << 20;
constexpr int kBlockBytes = 64 * 1024;  // the container's segment size
constexpr int kZlibLevel = 6;           // the container's compression level
constexpr int kRepeats = 3;
constexpr int kMemoryScale = 4;  // the memory pass writes this many times the throughput pass
constexpr long kMemoryAimKiB = 64 * 1024;
constexpr double kRatioAim = 0.8;
constexpr int kReadPasses = 7;
constexpr double kReadCpuAim = 1.1;  // the compressed file's processor time over zlib's
constexpr int kSpotCheckStride = 4099;  // rows apart in the memory pass's check
constexpr long long kLargestMiB = 8192;  // keeps the memory pass's row count in an int
char const kMagic[] = "BNCH";

// Nodes of a structured mesh, numbered along x, then y, then z.
constexpr int kGridX = 160;
constexpr int kGridY = 120;
constexpr double kSpacing = 0.0125;
constexpr double kAmplitude = 2.5e-3;

// One row: what a solver writes per node and load step.
struct NodeResult {
  int id;
  double x, y, z;
  double ux, uy, uz;
};

// Mode shapes along x and y, computed once so that producing a row costs a
// few multiplications and the read pass measures reading, not sin().
class DisplacementField {
public:
  DisplacementField() : m_AlongX(kGridX), m_AlongY(kGridY) {
    double const pi = std::acos(-1.0);
    for (int i = 0; i < kGridX; ++i) m_AlongX[static_cast<std::size_t>(i)] = std::sin(pi * (i + 0.5) / kGridX);
    for (int j = 0; j < kGridY; ++j) m_AlongY[static_cast<std::size_t>(j)] = std::cos(0.5 * pi * j / kGridY);
  }

  NodeResult At(int node) const {
    int i = node % kGridX;
    int j = node / kGridX % kGridY;
    int k = node / (kGridX * kGridY);
    double sx = m_AlongX[static_cast<std::size_t>(i)];
    double cy = m_AlongY[static_cast<std::size_t>(j)];
    double height = k * kSpacing;
    double bend = kAmplitude * sx * cy * (1.0 + 0.05 * height);
    return {node + 1, i * kSpacing, j * kSpacing, height, bend * 0.3, -bend * cy, bend};
  }

private:
  std::vector<double> m_AlongX;
  std::vector<double> m_AlongY;
};

// The fields of a row and their handles: by the index each definition
// returned when writing, by the index the stored table gives when reading
// (a table opened by handle numbers its fields in name order).
struct NodeFields {
  explicit NodeFields(rfm_TableMetadata& layout)
      : id(layout.DefineIntField("id")), x(layout.DefineDoubleField("x")), y(layout.DefineDoubleField("y")),
        z(layout.DefineDoubleField("z")), ux(layout.DefineDoubleField("ux")), uy(layout.DefineDoubleField("uy")),
        uz(layout.DefineDoubleField("uz")) {}
  explicit NodeFields(rfm_Table const& table)
      : id(table.Index("id")), x(table.Index("x")), y(table.Index("y")), z(table.Index("z")), ux(table.Index("ux")),
        uy(table.Index("uy")), uz(table.Index("uz")) {}

  rfm_FieldHandle id, x, y, z, ux, uy, uz;
};

bool Matches(rfm_Row const& row, NodeFields const& f, NodeResult const& want) {
  return row.ReadFieldInt(f.id) == want.id && row.ReadFieldDouble(f.x) == want.x &&
         row.ReadFieldDouble(f.y) == want.y && row.ReadFieldDouble(f.z) == want.z &&
         row.ReadFieldDouble(f.ux) == want.ux && row.ReadFieldDouble(f.uy) == want.uy &&
         row.ReadFieldDouble(f.uz) == want.uz;
}

long long FileBytes(std::string const& path) {
  struct stat status;
  zqa_Check(::stat(path.c_str(), &status) == 0, "stat of a bench file");
  return static_cast<long long>(status.st_size);
}

// What a write pass leaves for its read pass.
struct Written {
  rfm_Handle handle;
  int rows = 0;
  int rowBytes = 0;
};

// Rows up to bytes of row data into a new database in file; ends with the
// table flushed and the database closed.
Written WriteRows(rfm_File const& file, long long bytes, DisplacementField const& field) {
  Written written;
  rfm_Database database = rfm_Database::Create(file, kMagic, "compressed file benchmark", 0);
  rfm_TableMetadata layout("NodeResults", 1);
  NodeFields const f(layout);
  rfm_Table table = database.Table(layout, 1 << 20, -1);
  written.rowBytes = table.RowSize();
  written.rows = static_cast<int>(bytes / written.rowBytes);
  for (int node = 0; node < written.rows; ++node) {
    NodeResult const result = field.At(node);
    rfm_Row row = table.NewRow();
    row.WriteFieldInt(f.id, result.id);
    row.WriteFieldDouble(f.x, result.x);
    row.WriteFieldDouble(f.y, result.y);
    row.WriteFieldDouble(f.z, result.z);
    row.WriteFieldDouble(f.ux, result.ux);
    row.WriteFieldDouble(f.uy, result.uy);
    row.WriteFieldDouble(f.uz, result.uz);
  }
  table.Flush();
  written.handle = table.Handle();
  return written;
}

// Reads every stride-th row (and the last) of a written table and checks it.
void ReadRows(std::string const& path, Written const& written, DisplacementField const& field, int stride) {
  rfm_Database database = rfm_Database::Open(rfm_File::Open(path.c_str(), utl_FileAccessRead, false), kMagic);
  rfm_Table table = database.Table(written.handle, -1, -1);
  NodeFields const f(table);
  zqa_Check(table.Length() == written.rows, "row count read back");
  for (int node = 0; node < written.rows; node += stride) {
    zqa_Check(Matches(table.ReadRow(node), f, field.At(node)), "row read back");
  }
  int last = written.rows - 1;
  zqa_Check(Matches(table.ReadRow(last), f, field.At(last)), "last row read back");
}

struct DatabasePass {
  zqa_PassTimes times;
  zqa_CpuSplit writeSplit;
  zqa_CpuSplit readSplit;
  Written written;
  long long fileBytes = 0;
};

// One write and read of a compressed or a plain database file; keepFile
// leaves the file for the zlib baseline.
DatabasePass DatabaseFilePass(std::string const& path, long long bytes, bool compressed, bool keepFile,
                              DisplacementField const& field) {
  DatabasePass pass;
  pass.times.writeSeconds = zqa_Seconds([&] {
    rfm_File file = compressed ? rfm_File::CreateCompressed(path.c_str())
                               : rfm_File::Open(path.c_str(), utl_FileAccessCreate, true);
    pass.written = WriteRows(file, bytes, field);
  });
  pass.writeSplit = zqa_LastCpuSplit();
  pass.fileBytes = FileBytes(path);
  pass.times.readSeconds = zqa_Seconds([&] { ReadRows(path, pass.written, field, 1); });
  pass.readSplit = zqa_LastCpuSplit();
  if (!keepFile) ::unlink(path.c_str());
  return pass;
}

DatabasePass BestDatabasePass(std::string const& path, long long bytes, bool compressed, bool keepFile,
                              DisplacementField const& field) {
  DatabasePass best;
  best.times = zqa_Best(kRepeats, [&] {
    best = DatabaseFilePass(path, bytes, compressed, keepFile, field);
    return best.times;
  });
  return best;
}

std::vector<unsigned char> ReadWholeFile(std::string const& path) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(FileBytes(path)));
  int fd = ::open(path.c_str(), O_RDONLY);
  zqa_Check(fd >= 0, "open of the plain file");
  std::size_t done = 0;
  while (done < bytes.size()) {
    ssize_t got = ::read(fd, bytes.data() + done, bytes.size() - done);
    zqa_Check(got > 0, "read of the plain file");
    done += static_cast<std::size_t>(got);
  }
  ::close(fd);
  return bytes;
}

struct ZlibPass {
  zqa_PassTimes times;
  long long compressedBytes = 0;
};

// The plain file's bytes through compress2 and uncompress in blocks of the
// container's segment size; only the zlib calls are inside the timing.
ZlibPass ZlibBlocks(std::vector<unsigned char> const& plain) {
  std::size_t const blocks = (plain.size() + kBlockBytes - 1) / kBlockBytes;
  uLong const bound = compressBound(kBlockBytes);
  std::vector<unsigned char> packed(blocks * bound);
  std::vector<uLongf> packedSizes(blocks);
  std::vector<unsigned char> unpacked(plain.size());
  auto blockSize = [&](std::size_t block) {
    return static_cast<uLong>(std::min<std::size_t>(kBlockBytes, plain.size() - block * kBlockBytes));
  };
  ZlibPass pass;
  bool fine = true;
  pass.times.writeSeconds = zqa_Seconds([&] {
    for (std::size_t block = 0; block < blocks; ++block) {
      packedSizes[block] = bound;
      fine &= compress2(packed.data() + block * bound, &packedSizes[block], plain.data() + block * kBlockBytes,
                        blockSize(block), kZlibLevel) == Z_OK;
    }
  });
  zqa_Check(fine, "zlib compress2");
  pass.times.readSeconds = zqa_Seconds([&] {
    for (std::size_t block = 0; block < blocks; ++block) {
      uLongf size = blockSize(block);
      fine &= uncompress(unpacked.data() + block * kBlockBytes, &size, packed.data() + block * bound,
                         packedSizes[block]) == Z_OK &&
              size == blockSize(block);
    }
  });
  zqa_Check(fine && unpacked == plain, "zlib uncompress");
  for (uLongf size : packedSizes) pass.compressedBytes += static_cast<long long>(size);
  return pass;
}

// The plain file's bytes through a compressed rfm_File in calls of one
// segment, without the database and the table above it: what the container
// alone adds to zlib. The read pass checks every byte.
zqa_PassTimes ContainerPass(std::string const& path, std::vector<unsigned char> const& plain) {
  std::vector<unsigned char> back(plain.size());
  auto callSize = [&](std::size_t done) {
    return static_cast<int>(std::min<std::size_t>(kBlockBytes, plain.size() - done));
  };
  zqa_PassTimes times;
  times.writeSeconds = zqa_Seconds([&] {
    rfm_File file = rfm_File::CreateCompressed(path.c_str());
    for (std::size_t done = 0; done < plain.size(); done += kBlockBytes) {
      int count = callSize(done);
      zqa_Check(file.Write(reinterpret_cast<char const*>(plain.data() + done), count) == count, "container write");
    }
    file.Flush();
  });
  times.readSeconds = zqa_Seconds([&] {
    rfm_File file = rfm_File::Open(path.c_str(), utl_FileAccessRead, false);
    zqa_Check(file.Length() == static_cast<utl_FileOffset>(plain.size()), "container length");
    for (std::size_t done = 0; done < plain.size(); done += kBlockBytes) {
      int count = callSize(done);
      zqa_Check(file.Read(reinterpret_cast<char*>(back.data() + done), count) == count, "container read");
    }
  });
  zqa_Check(back == plain, "container contents");
  ::unlink(path.c_str());
  return times;
}

char const* Verdict(bool met) { return met ? "met" : "NOT met"; }

char const* LibraryDecoder() {
#ifdef ZQA_WITH_LIBDEFLATE
  return "libdeflate";
#else
  return "zlib";
#endif
}

// The plain bytes cut into segments and compressed by zlib, each segment
// in a block of the bound's size.
struct ZlibSegments {
  explicit ZlibSegments(std::vector<unsigned char> const& plain)
      : count((plain.size() + kBlockBytes - 1) / kBlockBytes), bound(compressBound(kBlockBytes)),
        packed(count * bound), packedSizes(count) {
    for (std::size_t block = 0; block < count; ++block) {
      packedSizes[block] = bound;
      zqa_Check(compress2(packed.data() + block * bound, &packedSizes[block], plain.data() + block * kBlockBytes,
                          PlainSize(plain, block), kZlibLevel) == Z_OK,
                "zlib compress2");
    }
  }

  static uLong PlainSize(std::vector<unsigned char> const& plain, std::size_t block) {
    return static_cast<uLong>(std::min<std::size_t>(kBlockBytes, plain.size() - block * kBlockBytes));
  }

  std::size_t count;
  uLong bound;
  std::vector<unsigned char> packed;
  std::vector<uLongf> packedSizes;
};

// Wall-clock and processor seconds of one pass.
struct Sample {
  double wall;
  double cpu;
};

// One way of reading the bytes, and its passes.
struct ReadSide {
  char const* name;
  std::function<void()> pass;
  std::vector<Sample> samples;

  void Run() {
    double const wall = zqa_Seconds(pass);
    samples.push_back({wall, zqa_LastCpuSplit().user + zqa_LastCpuSplit().system});
  }
  double MinWall() const {
    double best = 1e30;
    for (Sample const& sample : samples) best = std::min(best, sample.wall);
    return best;
  }
  double MedianWall() const {
    std::vector<double> walls;
    for (Sample const& sample : samples) walls.push_back(sample.wall);
    return zqa_Median(walls);
  }
  double MedianCpu() const {
    std::vector<double> cpus;
    for (Sample const& sample : samples) cpus.push_back(sample.cpu);
    return zqa_Median(cpus);
  }
};

// The plain bytes as a compressed rfm_File read in calls of one segment,
// against zlib's (and libdeflate's) uncompress of the same segments, the
// sides alternating in order from pass to pass. Every side's output is
// checked once, outside the timing.
void ReadComparison(std::string const& path, std::vector<unsigned char> const& plain) {
  {
    rfm_File file = rfm_File::CreateCompressed(path.c_str());
    for (std::size_t done = 0; done < plain.size(); done += kBlockBytes) {
      int count = static_cast<int>(std::min<std::size_t>(kBlockBytes, plain.size() - done));
      zqa_Check(file.Write(reinterpret_cast<char const*>(plain.data() + done), count) == count, "container write");
    }
  }
  ZlibSegments const segments(plain);
  std::vector<unsigned char> out(plain.size());
  bool fine = true;
  std::vector<ReadSide> sides;
  sides.push_back({"compressed rfm_File, 64 KiB calls", [&] {
                     rfm_File file = rfm_File::Open(path.c_str(), utl_FileAccessRead, false);
                     for (std::size_t done = 0; done < plain.size(); done += kBlockBytes) {
                       int count = static_cast<int>(std::min<std::size_t>(kBlockBytes, plain.size() - done));
                       fine &= file.Read(reinterpret_cast<char*>(out.data() + done), count) == count;
                     }
                   }, {}});
  sides.push_back({"zlib uncompress, 64 KiB segments", [&] {
                     for (std::size_t block = 0; block < segments.count; ++block) {
                       uLongf size = ZlibSegments::PlainSize(plain, block);
                       fine &= uncompress(out.data() + block * kBlockBytes, &size,
                                          segments.packed.data() + block * segments.bound,
                                          segments.packedSizes[block]) == Z_OK;
                     }
                   }, {}});
#ifdef ZQA_WITH_LIBDEFLATE
  libdeflate_decompressor* decompressor = libdeflate_alloc_decompressor();
  zqa_Check(decompressor != nullptr, "libdeflate decompressor");
  sides.push_back({"libdeflate zlib decompress, 64 KiB segments", [&] {
                     for (std::size_t block = 0; block < segments.count; ++block) {
                       fine &= libdeflate_zlib_decompress(decompressor, segments.packed.data() + block * segments.bound,
                                                          segments.packedSizes[block], out.data() + block * kBlockBytes,
                                                          ZlibSegments::PlainSize(plain, block),
                                                          nullptr) == LIBDEFLATE_SUCCESS;
                     }
                   }, {}});
#endif
  for (ReadSide& side : sides) {
    std::fill(out.begin(), out.end(), 0);
    side.pass();
    zqa_Check(fine && out == plain, side.name);
  }
  for (int pass = 0; pass < kReadPasses; ++pass) {
    for (std::size_t i = 0; i < sides.size(); ++i) sides[pass % 2 ? sides.size() - 1 - i : i].Run();
  }
  zqa_Check(fine, "read passes");
#ifdef ZQA_WITH_LIBDEFLATE
  libdeflate_free_decompressor(decompressor);
#endif
  ::unlink(path.c_str());

  double const mib = static_cast<double>(plain.size()) / kMiB;
  std::printf("reading %.1f MiB of a plain database file's bytes, %d interleaved passes, segments decoded by %s\n", mib,
              kReadPasses, LibraryDecoder());
  std::printf("%-46s %12s %12s %14s\n", "", "min MiB/s", "median MiB/s", "median cpu s");
  for (ReadSide const& side : sides) {
    std::printf("%-46s %12.1f %12.1f %14.3f\n", side.name, mib / side.MinWall(), mib / side.MedianWall(),
                side.MedianCpu());
  }
  ReadSide const& ours = sides[0];
  for (std::size_t i = 1; i < sides.size(); ++i) {
    double const speed = sides[i].MedianWall() / ours.MedianWall();
    double const cpu = ours.MedianCpu() / sides[i].MedianCpu();
    std::printf("compressed rfm_File / %s: speed %.2f, processor time %.2f", sides[i].name, speed, cpu);
    if (i == 1) {
      std::printf(" (aim speed >= %.1f: %s, processor time <= %.1f: %s)", kRatioAim, Verdict(speed >= kRatioAim),
                  kReadCpuAim, Verdict(cpu <= kReadCpuAim));
    }
    std::printf("\n");
  }
}

long ResidentKiB(char const* key) {
  FILE* status = std::fopen("/proc/self/status", "r");
  if (status == nullptr) return -1;
  char line[256];
  long kib = -1;
  std::size_t const keyLength = std::strlen(key);
  while (std::fgets(line, sizeof line, status)) {
    if (std::strncmp(line, key, keyLength) == 0) kib = std::atol(line + keyLength);
  }
  std::fclose(status);
  return kib;
}

// What the memory child tells its parent through a pipe.
struct MemoryReport {
  long startKiB = -1;
  double writeSeconds = 0;
  Written written;
};

struct MemoryPass {
  MemoryReport report;
  long peakKiB = -1;
  bool childSucceeded = false;
};

// Writes bytes of rows into a compressed file in a child process that does
// nothing else, and takes the child's peak resident size from wait4.
MemoryPass CompressedWriteMemory(std::string const& path, long long bytes, DisplacementField const& field) {
  int channel[2];
  zqa_Check(::pipe(channel) == 0, "pipe");
  std::fflush(stdout);
  std::fflush(stderr);
  pid_t child = ::fork();
  zqa_Check(child >= 0, "fork");
  if (child == 0) {
    ::close(channel[0]);
    MemoryReport report;
    report.startKiB = ResidentKiB("VmRSS:");
    try {
      report.writeSeconds = zqa_Seconds(
          [&] { report.written = WriteRows(rfm_File::CreateCompressed(path.c_str()), bytes, field); });
    } catch (std::exception const& e) {
      std::fprintf(stderr, "memory pass: %s\n", e.what());
      ::_exit(2);
    }
    bool sent = ::write(channel[1], &report, sizeof report) == static_cast<ssize_t>(sizeof report);
    ::_exit(sent ? 0 : 2);
  }
  ::close(channel[1]);
  MemoryPass pass;
  bool received = ::read(channel[0], &pass.report, sizeof pass.report) == static_cast<ssize_t>(sizeof pass.report);
  ::close(channel[0]);
  int status = 0;
  rusage usage;
  zqa_Check(::wait4(child, &status, 0, &usage) == child, "wait4");
  pass.peakKiB = usage.ru_maxrss;
  pass.childSucceeded = received && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  return pass;
}

double MiBPerSecond(long long bytes, double seconds) { return static_cast<double>(bytes) / kMiB / seconds; }

// Write and read speeds of a pass in MiB per second of the bytes it moved.
struct Throughput {
  Throughput(long long bytes, zqa_PassTimes const& times)
      : write(MiBPerSecond(bytes, times.writeSeconds)), read(MiBPerSecond(bytes, times.readSeconds)) {}
  double write;
  double read;
};

int RunAlone(std::string const& only, std::string const& base, long long bytes, DisplacementField const& field) {
  if (only == "memory") {
    MemoryPass memory = CompressedWriteMemory(base + ".memory.zdb", bytes * kMemoryScale, field);
    ::unlink((base + ".memory.zdb").c_str());
    zqa_Check(memory.childSucceeded, "memory pass child");
    std::printf("memory: write %.3f s, peak resident %ld KiB\n", memory.report.writeSeconds, memory.peakKiB);
    return 0;
  }
  zqa_Check(only == "read" || only == "compressed" || only == "plain" || only == "container",
            "only: read, compressed, plain, container or memory");
  zqa_PassTimes times;
  if (only == "read") {
    DatabaseFilePass(base + ".plain.zdb", bytes, false, true, field);
    std::vector<unsigned char> const plainBytes = ReadWholeFile(base + ".plain.zdb");
    ::unlink((base + ".plain.zdb").c_str());
    ReadComparison(base + ".read.zdb", plainBytes);
    return 0;
  }
  if (only == "container") {
    DatabaseFilePass(base + ".plain.zdb", bytes, false, true, field);
    std::vector<unsigned char> const plainBytes = ReadWholeFile(base + ".plain.zdb");
    ::unlink((base + ".plain.zdb").c_str());
    times = ContainerPass(base + ".container.zdb", plainBytes);
  } else {
    times = DatabaseFilePass(base + "." + only + ".zdb", bytes, only == "compressed", false, field).times;
  }
  std::printf("%s: write %.3f s, read %.3f s\n", only.c_str(), times.writeSeconds, times.readSeconds);
  return 0;
}

int Run(int argc, char** argv) {
  long long const mib = argc > 1 ? std::atoll(argv[1]) : 256;
  zqa_Check(mib > 0 && mib <= kLargestMiB, "MiB: from 1 to 8192");
  long long const bytes = mib * kMiB;
  std::string const base = zqa_BenchPath("zqa-compressed");
  DisplacementField const field;
  if (argc > 2) return RunAlone(argv[2], base, bytes, field);

  // First, while this process is small: the child starts as a copy of it.
  std::string const memoryPath = base + ".memory.zdb";
  MemoryPass memory = CompressedWriteMemory(memoryPath, bytes * kMemoryScale, field);
  if (!memory.childSucceeded) ::unlink(memoryPath.c_str());
  zqa_Check(memory.childSucceeded, "memory pass child");
  long long const memoryFileBytes = FileBytes(memoryPath);
  ReadRows(memoryPath, memory.report.written, field, kSpotCheckStride);
  ::unlink(memoryPath.c_str());

  std::string const compressedPath = base + ".compressed.zdb";
  std::string const plainPath = base + ".plain.zdb";
  DatabasePass compressed = BestDatabasePass(compressedPath, bytes, true, false, field);
  DatabasePass plain = BestDatabasePass(plainPath, bytes, false, true, field);
  std::vector<unsigned char> const plainBytes = ReadWholeFile(plainPath);
  ::unlink(plainPath.c_str());
  ReadComparison(base + ".read.zdb", plainBytes);
  ZlibPass zlib;
  zlib.times = zqa_Best(kRepeats, [&] {
    zlib = ZlibBlocks(plainBytes);
    return zlib.times;
  });
  zqa_PassTimes const container =
      zqa_Best(kRepeats, [&] { return ContainerPass(base + ".container.zdb", plainBytes); });

  long long const rowBytes = static_cast<long long>(compressed.written.rows) * compressed.written.rowBytes;
  long long const plainFileBytes = static_cast<long long>(plainBytes.size());
  Throughput const compressedSpeed(rowBytes, compressed.times);
  Throughput const plainSpeed(rowBytes, plain.times);
  Throughput const zlibSpeed(plainFileBytes, zlib.times);
  Throughput const containerSpeed(plainFileBytes, container);

  std::printf("%d node result rows of %d bytes (int id, six doubles): %.1f MiB of rows, best of %d, page cache warm\n",
              compressed.written.rows, compressed.written.rowBytes, static_cast<double>(rowBytes) / kMiB, kRepeats);
  std::printf("%-50s %12s %12s\n", "", "write MiB/s", "read MiB/s");
  auto line = [](char const* name, Throughput const& speed) {
    std::printf("%-50s %12.1f %12.1f\n", name, speed.write, speed.read);
  };
  line("compressed database file, rfm_Table rows", compressedSpeed);
  line("plain database file, rfm_Table rows", plainSpeed);
  line("zlib compress2/uncompress, 64 KiB blocks", zlibSpeed);
  line("compressed rfm_File alone, 64 KiB calls", containerSpeed);
  auto ratio = [](char const* name, Throughput const& ours, Throughput const& theirs, bool aimed) {
    double write = ours.write / theirs.write;
    double read = ours.read / theirs.read;
    std::printf("%s (speed): write %.2f, read %.2f", name, write, read);
    if (aimed) {
      std::printf(" (aim %.1f: write %s, read %s)", kRatioAim, Verdict(write >= kRatioAim),
                  Verdict(read >= kRatioAim));
    }
    std::printf("\n");
  };
  ratio("compressed database file / zlib", compressedSpeed, zlibSpeed, true);
  ratio("compressed rfm_File alone / zlib", containerSpeed, zlibSpeed, false);
  ratio("compressed database file / plain database file", compressedSpeed, plainSpeed, false);
  std::printf("compressed file processor time, last pass: write %.2f s user + %.2f s system, read %.2f s user + %.2f s "
              "system\n",
              compressed.writeSplit.user, compressed.writeSplit.system, compressed.readSplit.user,
              compressed.readSplit.system);
  std::printf("sizes: plain file %lld bytes, compressed file %lld bytes (%.3f of plain), zlib blocks %lld bytes (%.3f "
              "of plain); compressed file / zlib blocks %.3f\n",
              plainFileBytes, compressed.fileBytes, static_cast<double>(compressed.fileBytes) / plainFileBytes,
              zlib.compressedBytes, static_cast<double>(zlib.compressedBytes) / plainFileBytes,
              static_cast<double>(compressed.fileBytes) / zlib.compressedBytes);
  long long const memoryRowBytes = static_cast<long long>(memory.report.written.rows) * memory.report.written.rowBytes;
  std::printf("memory: %.0f MiB of rows into a compressed file (%lld bytes) in a child, write %.1f MiB/s\n",
              static_cast<double>(memoryRowBytes) / kMiB, memoryFileBytes,
              MiBPerSecond(memoryRowBytes, memory.report.writeSeconds));
  std::printf("memory: peak resident %.1f MiB (%.1f MiB at the start), aim under %ld MiB: %s\n",
              memory.peakKiB / 1024.0, memory.report.startKiB / 1024.0, kMemoryAimKiB / 1024,
              Verdict(memory.peakKiB < kMemoryAimKiB));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 2;
  }
}
