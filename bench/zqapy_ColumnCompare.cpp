// One double column of a table of (int, float, double) rows read whole into
// memory through the Python package and through the C++ bulk path, from the
// same file in the same run: zqaromcore's Table.column into a NumPy array
// against rfm_Table::ReadColumn into a std::vector<double> (rows without
// data read as NaN on both sides), and Table.read of the same field (a
// masked array) against ReadColumn with a presence array. Every thousandth
// row's double holds no data, so that the masks mean something.
//
// The sides run in interleaved rounds. The Python side is a child process
// per round (zqapy_column_compare.py) that times the two calls alone: the
// interpreter's start, the import and the open stay outside, as the open
// stays outside on the C++ side, which opens the file afresh each round
// too. The package makes its arrays in the timed call; the C++ side reads
// into vectors made before its timing ("c++", the read alone) and into
// vectors made in it ("c++ fresh", as a caller who wants a new array
// pays). NumPy asks the kernel for huge pages for large arrays, so that a
// fresh NumPy array costs fewer page faults than a fresh std::vector, which
// also writes its zeros first. Every side reports the sum of the column and
// of every 997th value of it, which are checked against the values written.
// Prints millions of rows per second at the fastest pass and at the median,
// and the ratios of the medians.
//
//   zqapy_ColumnCompare [rows] [rounds] [only]
//       defaults 10000000 and 7; TMPDIR picks the folder
//
// With "only" given as the name of one side (c++, c++ fresh, python), runs
// that side alone, for a profiler.

#include "zqa_Bench.h"
#include "rfm_Column.h"
#include "rfm_Database.h"
#include "rfm_File.h"
#include "rfm_Table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kBatchRows = 64 * 1024;
constexpr int kAbsentEvery = 1000;
constexpr int kStride = 997;
char const kMagic[] = "BNCH";
char const kTableName[] = "Results";
char const kIdField[] = "id";
char const kLoadField[] = "load";
char const kValueField[] = "value";

// Row i of the table; the values are quarters below 2^51, so that every sum
// of them is exact in either order of adding.
int Id(int i) { return i + 1; }
float Load(int i) { return static_cast<float>(i % 100) / 100; }
double Value(int i) { return i * 0.25; }
bool HasValue(int i) { return i % kAbsentEvery != kAbsentEvery - 1; }

// What a read of the value column must show.
struct Expected {
  double sum = 0;
  double strided = 0;
  long absent = 0;
};

Expected ExpectedOf(int rows) {
  Expected expected;
  for (int i = 0; i < rows; ++i) {
    double const value = HasValue(i) ? Value(i) : 0.0;
    expected.sum += value;
    if (i % kStride == 0) expected.strided += value;
    if (!HasValue(i)) ++expected.absent;
  }
  return expected;
}

// The file, written once through the bulk path.
struct Workload {
  std::string path;
  int rows = 0;
  rfm_Handle handle;
  Expected expected;
};

void WriteTable(Workload& work) {
  std::vector<int> ids(kBatchRows);
  std::vector<float> loads(kBatchRows);
  std::vector<double> values(kBatchRows);
  std::vector<unsigned char> present(kBatchRows);
  rfm_Database database =
      rfm_Database::Create(rfm_File::Open(work.path.c_str(), utl_FileAccessCreate, true), kMagic, "", 0);
  rfm_TableMetadata layout(kTableName, 1);
  rfm_Column columns[] = {
      rfm_Column::Ints(rfm_FieldHandle(layout.DefineIntField(kIdField)), static_cast<int const*>(ids.data())),
      rfm_Column::Floats(rfm_FieldHandle(layout.DefineFloatField(kLoadField)), static_cast<float const*>(loads.data())),
      rfm_Column::Doubles(rfm_FieldHandle(layout.DefineDoubleField(kValueField)),
                          static_cast<double const*>(values.data()))};
  columns[2].Presence(static_cast<unsigned char const*>(present.data()));
  rfm_Table table = database.Table(layout, 1 << 20, -1);
  for (int done = 0; done < work.rows; done += kBatchRows) {
    int const count = std::min(kBatchRows, work.rows - done);
    for (int k = 0; k < count; ++k) {
      std::size_t const at = static_cast<std::size_t>(k);
      ids[at] = Id(done + k);
      loads[at] = Load(done + k);
      values[at] = Value(done + k);
      present[at] = HasValue(done + k) ? 1 : 0;
    }
    table.AppendColumns(count, columns, 3);
  }
  table.Flush();
  database.Flush();
  work.handle = table.Handle();
}

// Ends the run unless a read's sums and count of rows without data are the
// ones written.
void CheckRead(Expected const& expected, double sum, double strided, long absent, char const* what) {
  bool const right = sum == expected.sum && strided == expected.strided && absent == expected.absent;
  if (!right) {
    std::fprintf(stderr, "%s read sums %.17g and %.17g with %ld rows without data, not %.17g, %.17g and %ld\n", what,
                 sum, strided, absent, expected.sum, expected.strided, expected.absent);
  }
  zqa_Check(right, what);
}

// values hold NaN for rows without data, or present says which hold none.
void CheckValues(Workload const& work, std::vector<double> const& values, std::vector<unsigned char> const* present,
                 char const* what) {
  double sum = 0;
  double strided = 0;
  long absent = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    bool const has = present ? (*present)[i] != 0 : !std::isnan(values[i]);
    double const value = has ? values[i] : 0.0;
    sum += value;
    if (i % kStride == 0) strided += value;
    absent += has ? 0 : 1;
  }
  CheckRead(work.expected, sum, strided, absent, what);
}

// rfm_Table::ReadColumn of the whole column: rows without data as NaN, then
// with presence. With fresh, the arrays are made in the timed part, as the
// package makes its own; otherwise before it, so that the read goes into
// memory already in use.
void CppSide(Workload const& work, bool fresh, zqa_Measures& measures) {
  rfm_Database database = rfm_Database::Open(rfm_File::Open(work.path.c_str(), utl_FileAccessRead, false), kMagic);
  rfm_Table table = database.Table(work.handle, -1, -1);
  rfm_FieldHandle const field(table.Index(kValueField));
  double const none = std::numeric_limits<double>::quiet_NaN();
  std::size_t const length = static_cast<std::size_t>(table.Length());
  std::vector<double> values(fresh ? 0 : length);
  measures["column"] = zqa_Seconds([&] {
    int const rows = table.Length();
    if (fresh) values = std::vector<double>(static_cast<std::size_t>(rows));
    zqa_Check(table.ReadColumn(0, rows, rfm_Column::Doubles(field, values.data(), none)) == rows,
              "C++ column count");
  });
  CheckValues(work, values, nullptr, "C++ column");
  if (fresh) values = std::vector<double>();
  std::vector<unsigned char> present(fresh ? 0 : length);
  measures["masked"] = zqa_Seconds([&] {
    int const rows = table.Length();
    if (fresh) {
      values = std::vector<double>(static_cast<std::size_t>(rows));
      present = std::vector<unsigned char>(static_cast<std::size_t>(rows));
    }
    zqa_Check(table.ReadColumn(0, rows, rfm_Column::Doubles(field, values.data()).Presence(present.data())) == rows,
              "C++ masked count");
  });
  CheckValues(work, values, &present, "C++ masked");
}

// Runs the Python side on the file and returns what it printed; a side that
// fails ends the run.
std::string RunPython(Workload const& work) {
  std::string const handle = std::to_string(work.handle.Value());
  std::string const stride = std::to_string(kStride);
  char const* const arguments[] = {ZQA_PYTHON, ZQA_PYTHON_SIDE, work.path.c_str(), handle.c_str(),
                                   kValueField, stride.c_str(), nullptr};
  int pipeEnds[2];
  zqa_Check(::pipe(pipeEnds) == 0, "a pipe to Python");
  pid_t const child = ::fork();
  zqa_Check(child >= 0, "fork for Python");
  if (child == 0) {
    ::dup2(pipeEnds[1], STDOUT_FILENO);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
    ::execv(ZQA_PYTHON, const_cast<char* const*>(arguments));
    std::perror(ZQA_PYTHON);
    ::_exit(127);
  }
  ::close(pipeEnds[1]);
  std::string output;
  char buffer[4096];
  for (ssize_t got; (got = ::read(pipeEnds[0], buffer, sizeof buffer)) > 0;) {
    output.append(buffer, static_cast<std::size_t>(got));
  }
  ::close(pipeEnds[0]);
  int status = 0;
  zqa_Check(::waitpid(child, &status, 0) == child, "waiting for Python");
  zqa_Check(WIFEXITED(status) && WEXITSTATUS(status) == 0, "the Python side succeeded");
  return output;
}

// The package's Table.column and Table.read, in a child process. It prints
// "<measure> <seconds> <sum> <strided sum> <rows without data>" a line.
void PythonSide(Workload const& work, zqa_Measures& measures) {
  std::istringstream lines(RunPython(work));
  int reported = 0;
  for (std::string measure; lines >> measure;) {
    double seconds = 0;
    double sum = 0;
    double strided = 0;
    long absent = 0;
    zqa_Check(static_cast<bool>(lines >> seconds >> sum >> strided >> absent), "a whole line from Python");
    zqa_Check(measure == "column" || measure == "masked", "a measure Python takes");
    CheckRead(work.expected, sum, strided, absent, measure == "column" ? "Python column" : "Python masked");
    measures[measure] = seconds;
    ++reported;
  }
  zqa_Check(reported == 2, "both measures from Python");
}

}  // namespace

int main(int argc, char** argv) {
  int const rows = argc > 1 ? std::atoi(argv[1]) : 10000000;
  int const rounds = argc > 2 ? std::atoi(argv[2]) : 7;
  std::string const only = argc > 3 ? argv[3] : "";
  zqa_Check(rows > 0 && rounds > 0, "arguments: counts above 0");
  // The child finds the package of the build this program belongs to.
  zqa_Check(::setenv("PYTHONPATH", ZQA_PYTHON_PACKAGE_FOLDER, 1) == 0, "PYTHONPATH for the Python side");

  Workload work;
  work.path = zqa_BenchPath("zqa-column") + ".zdb";
  work.rows = rows;
  work.expected = ExpectedOf(rows);
  WriteTable(work);

  zqa_Rounds compare;
  compare.Side("c++", [&](zqa_Measures& m) { CppSide(work, false, m); });
  compare.Side("c++ fresh", [&](zqa_Measures& m) { CppSide(work, true, m); });
  compare.Side("python", [&](zqa_Measures& m) { PythonSide(work, m); });
  compare.Run(rounds, only);
  ::unlink(work.path.c_str());

  std::printf("zqapy_ColumnCompare: the double column of %d rows of (int, float, double), every %dth without data, "
              "read whole; %d interleaved rounds, page cache warm, Python in a child process a round\n",
              rows, kAbsentEvery, rounds);
  zqa_Rounds::PrintRateHeading("millions of rows per second");
  std::vector<std::pair<std::string, double>> const counts = {{"column", rows}, {"masked", rows}};
  for (char const* side : {"c++", "c++ fresh", "python"}) compare.PrintRates(side, counts);
  if (!only.empty()) return 0;
  std::printf("ratios of medians (above 1: the first is faster)\n");
  compare.PrintRatios("Python / C++", "python", "c++", {"column", "masked"});
  compare.PrintRatios("Python / C++ fresh", "python", "c++ fresh", {"column", "masked"});
  return 0;
}
