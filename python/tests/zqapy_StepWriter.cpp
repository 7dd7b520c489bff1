// A writer for a reader in another process to follow: creates a database
// with a table "Samples" and a double array of two fields, then appends to
// both in steps of ROWS rows, flushing the table, the array and the
// database after each step, as its standard input asks. Each step is a
// transaction marked for readers (rfm_ReaderSemaphoreProxy), so that a
// reader of the file's path sees whole steps only:
//
//   step     writes one step and answers "flushed S" (S: steps so far)
//   run N    writes N steps one after the other, as fast as it can, and
//            answers "ran S"
//   append   writes one step and flushes the table and the array but not
//            the database, outside any transaction, and answers
//            "appended S": their bytes are in the file, and no reader is
//            to see them yet
//   flush    flushes the database and answers "flushed S"
//
// It answers "ready TABLE ARRAY" (their handles) once both exist in the
// file, and ends at the end of its input. Row r of the table holds step
// (from 1), index r, value r / 2 and label "row r"; row r of the array
// holds r / 4 and -r.

#include "ZQARomCore.h"
#include "rfm_Array.h"
#include "rfm_Database.h"
#include "rfm_File.h"
#include "rfm_ReaderSemaphoreProxy.h"
#include "rfm_Row.h"
#include "rfm_Table.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

namespace {

// The table's fields, in the order they are defined: the index of each is
// its place here.
char const* const kFields[] = {"step", "index", "value", "label"};

rfm_TableMetadata Samples() {
  rfm_TableMetadata layout("Samples", 1);
  layout.DefineIntField(kFields[0]);
  layout.DefineIntField(kFields[1]);
  layout.DefineDoubleField(kFields[2]);
  layout.DefineStringField(kFields[3]);
  return layout;
}

class StepWriter {
public:
  StepWriter(char const* name, int rowsPerStep)
      : m_RowsPerStep(rowsPerStep),
        m_Database(rfm_Database::Create(rfm_File::Open(name, utl_FileAccessCreate, false), "STEP",
                                        "Steps for a reader beside the writer", std::time(nullptr))),
        m_Table(m_Database.Table(Samples(), -1, -1)),
        m_Array(m_Database.ArrayDouble(2, -1, 0)) {
    FlushObjects();
    FlushDatabase();
  }

  void Ready() const { std::printf("ready %d %d\n", m_Table.Handle().Value(), m_Array.Handle().Value()); }

  // One step as one transaction: readers hold off their snaps while the
  // marker beside the file says that it runs.
  void Step() {
    rfm_ReaderSemaphoreProxy const transaction(m_Database);
    Append();
    FlushDatabase();
  }

  // One step's rows, in the file but not yet admitted by a database flush.
  void Append() {
    ++m_Steps;
    for (int i = 0; i < m_RowsPerStep; ++i, ++m_Rows) {
      rfm_Row row = m_Table.NewRow();
      row.WriteFieldInt(m_Step, m_Steps);
      row.WriteFieldInt(m_Index, m_Rows);
      row.WriteFieldDouble(m_Value, m_Rows * 0.5);
      row.WriteFieldString(m_Label, ("row " + std::to_string(m_Rows)).c_str());
      double const pair[2] = {m_Rows * 0.25, -static_cast<double>(m_Rows)};
      m_Array.Write(pair, 1);
    }
    FlushObjects();
  }

  void FlushDatabase() { m_Database.Flush(); }

  int Steps() const { return m_Steps; }

private:
  void FlushObjects() {
    m_Table.Flush();
    m_Array.Flush();
  }

  int m_RowsPerStep;
  int m_Steps = 0;
  int m_Rows = 0;
  rfm_Database m_Database;
  rfm_Table m_Table;
  rfm_Array<double, rfm_TypeDouble> m_Array;
  rfm_FieldHandle const m_Step{kFields[0], 0};
  rfm_FieldHandle const m_Index{kFields[1], 1};
  rfm_FieldHandle const m_Value{kFields[2], 2};
  rfm_FieldHandle const m_Label{kFields[3], 3};
};

// Follows the commands on standard input; false on one it does not know.
bool Serve(StepWriter& writer) {
  writer.Ready();
  std::fflush(stdout);
  std::string line;
  while (std::getline(std::cin, line)) {
    std::istringstream words(line);
    std::string command;
    int count = 0;
    words >> command;
    if (command == "step") {
      writer.Step();
      std::printf("flushed %d\n", writer.Steps());
    } else if (command == "run" && (words >> count) && count >= 0) {
      for (int i = 0; i < count; ++i) writer.Step();
      std::printf("ran %d\n", writer.Steps());
    } else if (command == "append") {
      writer.Append();
      std::printf("appended %d\n", writer.Steps());
    } else if (command == "flush") {
      writer.FlushDatabase();
      std::printf("flushed %d\n", writer.Steps());
    } else {
      std::fprintf(stderr, "zqapy_StepWriter: unknown command \"%s\"\n", line.c_str());
      return false;
    }
    std::fflush(stdout);
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  int const rowsPerStep = argc == 3 ? std::atoi(argv[2]) : 0;
  if (rowsPerStep < 1) {
    std::fprintf(stderr, "usage: zqapy_StepWriter FILE ROWS-PER-STEP (1 or more)\n");
    return 2;
  }
  int modules = 0;
  ZQARomCore_initialize(modules);
  int status = EXIT_SUCCESS;
  try {
    StepWriter writer(argv[1], rowsPerStep);
    if (!Serve(writer)) status = 2;
  } catch (std::exception const& e) {
    std::fprintf(stderr, "%s: %s\n", argv[1], e.what());
    status = EXIT_FAILURE;
  }
  ZQARomCore_finalize(modules);
  return status;
}
