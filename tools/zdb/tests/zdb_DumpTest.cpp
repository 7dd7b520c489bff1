#include "rfm_TableMetadata.h"
#include "rfm_TestBytes.h"
#include "zdb_TestFiles.h"
#include "zdb_TestTool.h"
#include "zqa_TestDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cfloat>
#include <cmath>

namespace {

using json = nlohmann::json;

using ZdbDumpTest = rfm_FileKindTest;
RFM_INSTANTIATE_FOR_EACH_FILE_KIND(ZdbDumpTest);

json const& ObjectAt(json const& document, int handle) {
  for (json const& object : document.at("objects")) {
    if (object.at("handle") == handle) return object;
  }
  throw std::runtime_error("no object " + std::to_string(handle));
}

double NumberOf(json const& value) { return value.get<double>(); }

}  // namespace

TEST_P(ZdbDumpTest, JsonReadsBackEveryValueExactly) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"), GetParam());
  zdb_Run run = RunZdb({"dump", sample.m_Name, "--json"});
  ASSERT_EQ(0, run.m_Status) << run.m_Err;
  json document = json::parse(run.m_Out);
  EXPECT_EQ(sample.m_Name, document.at("file"));
  ASSERT_EQ(5u, document.at("objects").size()) << "tables, arrays and streams, no plain spaces";

  json const& parts = ObjectAt(document, sample.m_Parts);
  EXPECT_EQ("table", parts.at("kind"));
  EXPECT_EQ("Parts", parts.at("name"));
  EXPECT_EQ(4, parts.at("rowCount"));
  EXPECT_EQ(json::parse(R"([{"name":"density","type":"float"},{"name":"id","type":"int"},)"
                        R"({"name":"label","type":"string"},{"name":"mass","type":"double"},)"
                        R"({"name":"owner","type":"handle"}])"),
            parts.at("fields"));
  json const& rows = parts.at("rows");
  ASSERT_EQ(4u, rows.size());
  EXPECT_EQ(json::parse(R"({"density":7.849999904632568,"id":1,"label":"plain","mass":2.5,"owner":)" +
                        std::to_string(sample.m_Ints) + "}"),
            rows[0].at("values"));
  EXPECT_EQ(static_cast<double>(7.85f), NumberOf(rows[0]["values"]["density"]));
  json const& absent = rows[1].at("values");
  EXPECT_TRUE(absent.at("label").is_null());
  EXPECT_TRUE(absent.at("owner").is_null());
  EXPECT_TRUE(std::signbit(NumberOf(absent.at("mass")))) << "-0.0 keeps its sign";
  EXPECT_EQ(static_cast<double>(0.1f), NumberOf(absent.at("density")));
  json const& awkward = rows[2].at("values");
  EXPECT_EQ("NaN", awkward.at("mass"));
  EXPECT_EQ("Infinity", awkward.at("density"));
  // The bytes 0xFF 0xFE are no UTF-8: they come back as U+00FF and U+00FE.
  EXPECT_EQ("q\"b\\t\tn\nc\x01x\xc3\xbf\xc3\xbeu\xc2\xb5", awkward.at("label"));
  EXPECT_EQ(1e300, NumberOf(rows[3]["values"]["mass"]));
  EXPECT_EQ("-Infinity", rows[3]["values"]["density"]);
  EXPECT_EQ("", rows[3]["values"]["label"]);

  json const& ints = ObjectAt(document, sample.m_Ints);
  EXPECT_EQ("array", ints.at("kind"));
  EXPECT_EQ("int", ints.at("elementType"));
  EXPECT_EQ(2, ints.at("fieldsPerRow"));
  EXPECT_EQ(json::parse(R"([{"row":0,"values":[1,2]},{"row":1,"values":[-3,2147483647]},)"
                        R"({"row":2,"values":[-2147483648,0]}])"),
            ints.at("rows"));

  json const& doubles = ObjectAt(document, sample.m_Doubles).at("rows");
  ASSERT_EQ(3u, doubles.size());
  EXPECT_EQ(0.1, NumberOf(doubles[0]["values"][0]));
  EXPECT_TRUE(doubles[0]["values"][1].is_number_float());
  EXPECT_TRUE(std::signbit(NumberOf(doubles[0]["values"][1])));
  EXPECT_EQ(1e-300, NumberOf(doubles[0]["values"][2]));
  EXPECT_EQ(json::parse(R"(["Infinity","-Infinity","NaN"])"), doubles[1]["values"]);
  EXPECT_EQ(5e-324, NumberOf(doubles[2]["values"][0]));
  EXPECT_EQ(DBL_MAX, NumberOf(doubles[2]["values"][1]));
  EXPECT_EQ(1.2345678901234568e20, NumberOf(doubles[2]["values"][2]));
  EXPECT_TRUE(doubles[2]["values"][2].is_number_float());

  EXPECT_EQ(json::parse(R"([{"row":0,"values":["a","b"]},{"row":1,"values":["","\u0080"]}])"),
            ObjectAt(document, sample.m_Strings).at("rows"));

  json const& stream = ObjectAt(document, sample.m_Stream);
  EXPECT_EQ("stream", stream.at("kind"));
  EXPECT_EQ(json::parse(R"([{"item":0,"id":1,"type":"int","value":42},)"
                        R"({"item":1,"id":2,"type":"handle","value":)" +
                        std::to_string(sample.m_Ints) +
                        R"(},{"item":2,"id":3,"type":"float","value":0.25},)"
                        R"({"item":3,"id":4,"type":"double","value":0.3333333333333333},)"
                        R"({"item":4,"id":5,"type":"string","value":"run-7"}])"),
            stream.at("items"));
  EXPECT_EQ(1.0 / 3.0, NumberOf(stream["items"][3]["value"]));
}

TEST_P(ZdbDumpTest, TextShowsFieldsByNameAbsentFieldsAndEscapedStrings) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"), GetParam());
  zdb_Run run = RunZdb({"dump", sample.m_Name, "--table", "Parts"});
  ASSERT_EQ(0, run.m_Status) << run.m_Err;
  std::string owner = std::to_string(sample.m_Ints);
  EXPECT_EQ("table \"Parts\" at handle " + std::to_string(sample.m_Parts) + ": 4 rows\n" +
                "  row 0: density=7.85 id=1 label=\"plain\" mass=2.5 owner=" + owner + "\n" +
                "  row 1: density=0.1 id=2 label=absent mass=-0 owner=absent\n" +
                "  row 2: density=inf id=3 label=\"q\\\"b\\\\t\\tn\\nc\\x01x\\xFF\\xFEu\xc2\xb5\" mass=nan owner=" +
                owner + "\n" + "  row 3: density=-inf id=4 label=\"\" mass=1e+300 owner=absent\n",
            run.m_Out);

  zdb_Run stream = RunZdb({"dump", sample.m_Name, "--handle", std::to_string(sample.m_Stream)});
  EXPECT_EQ("stream at handle " + std::to_string(sample.m_Stream) + "\n" +
                "  item 0: id 1 int 42\n"
                "  item 1: id 2 handle " +
                owner + "\n" +
                "  item 2: id 3 float 0.25\n"
                "  item 3: id 4 double 0.3333333333333333\n"
                "  item 4: id 5 string \"run-7\"\n",
            stream.m_Out);
}

TEST_P(ZdbDumpTest, RowsHandleAndTableChooseWhatIsDumped) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"), GetParam());
  auto rowsOf = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"dump", sample.m_Name, "--json"});
    zdb_Run run = RunZdb(arguments);
    EXPECT_EQ(0, run.m_Status) << run.m_Err;
    std::vector<int> numbers;
    json document = json::parse(run.m_Out);
    for (json const& object : document.at("objects")) {
      bool table = object.contains("rows");
      for (json const& row : object.at(table ? "rows" : "items")) numbers.push_back(row.at(table ? "row" : "item"));
    }
    return numbers;
  };
  EXPECT_EQ(std::vector<int>({1, 2}), rowsOf({"--table", "Parts", "--rows", "1:3"}));
  EXPECT_EQ(std::vector<int>({2, 3}), rowsOf({"--table=Parts", "--rows=2:"}));
  EXPECT_EQ(std::vector<int>({0, 1}), rowsOf({"--handle", std::to_string(sample.m_Stream), "--rows", ":2"}));
  char hex[16];
  std::snprintf(hex, sizeof hex, "0x%x", sample.m_Ints);
  EXPECT_EQ(std::vector<int>({2}), rowsOf({"--handle", hex, "--rows", "2"}));

  zdb_Run space = RunZdb({"dump", sample.m_Name, "--handle", "2", "--json"});
  EXPECT_EQ(json::parse(R"({"handle":2,"kind":"space","length":0})"), json::parse(space.m_Out).at("objects")[0]);

  zdb_Run noObject = RunZdb({"dump", sample.m_Name, "--handle", "9999"});
  EXPECT_EQ(1, noObject.m_Status);
  EXPECT_EQ("zdb dump: " + sample.m_Name + ": handle 9999 names no object\n", noObject.m_Err);
  zdb_Run noTable = RunZdb({"dump", sample.m_Name, "--table", "Nope"});
  EXPECT_EQ(1, noTable.m_Status);
  EXPECT_EQ("zdb dump: " + sample.m_Name + ": no table layout is named \"Nope\"\n", noTable.m_Err);
}

// A selection that finds nothing to show fails with its reason rather than
// printing nothing: rows that no object has, a layout that no table uses,
// a table whose chain loops onto itself.
TEST(ZdbDumpSelectionTest, WhatCannotBeShownFailsWithTheReasonAndTheFileName) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"));
  zdb_Run rows = RunZdb({"dump", sample.m_Name, "--handle", std::to_string(sample.m_Ints), "--rows", "7:9"});
  EXPECT_EQ(1, rows.m_Status);
  EXPECT_EQ("zdb dump: " + sample.m_Name + ": no row or item lies in --rows 7:9\n", rows.m_Err);

  cow_String unused = dir.File("unused.zdb");
  {
    rfm_Database database = CreateTestDatabase(unused);
    rfm_TableMetadata layout("Loads", 1);
    layout.DefineIntField("x");
    database.Bind(layout);
  }
  zdb_Run layout = RunZdb({"dump", unused.CStr(), "--table", "Loads"});
  EXPECT_EQ(1, layout.m_Status);
  EXPECT_EQ("", layout.m_Out);
  EXPECT_EQ("zdb dump: " + std::string(unused.CStr()) + ": no table uses the layout \"Loads\"\n", layout.m_Err);

  std::string bytes = zqa_ReadFileBytes(sample.m_Name.c_str());
  PutStoredInt(bytes, LinkageOffset(sample.m_Parts) + kNextField, sample.m_Parts);
  std::string const looped = dir.File("looped.zdb").CStr();
  zqa_WriteFileBytes(looped.c_str(), bytes);
  for (char const* command : {"dump", "info", "objects", "tables"}) {
    std::vector<std::string> arguments = {command, looped};
    if (std::string(command) == "dump") arguments.insert(arguments.end(), {"--table", "Parts"});
    zdb_Run run = RunZdb(arguments);
    EXPECT_EQ(1, run.m_Status) << command;
    EXPECT_EQ("", run.m_Out) << command;
    EXPECT_EQ("zdb " + std::string(command) + ": " + looped +
                  ": ***ERROR: Unable to procede.  Zorbex database file is corrupt:\n  " + looped + "\n",
              run.m_Err);
  }
}

TEST(ZdbDumpDamageTest, ObjectsThatFailToReadLeaveValidJsonWithTheirErrorsAndExitStatusOne) {
  zqa_TestDir dir;
  zdb_Sample sample = MakeSample(dir.File("sample.zdb"));
  std::string bytes = zqa_ReadFileBytes(sample.m_Name.c_str());
  // The stream's third item gets a tag type that no item has.
  std::size_t item = FileOffsetOf(bytes, sample.m_Stream, 8 + 12 + 16);
  ASSERT_EQ(3, StoredInt(bytes, item));
  PutStoredInt(bytes, item, 9);
  // The int array's element type becomes one that no array has.
  PutStoredInt(bytes, FileOffsetOf(bytes, sample.m_Ints, 8), 46854);
  zqa_WriteFileBytes(sample.m_Name.c_str(), bytes);

  zdb_Run run = RunZdb({"dump", sample.m_Name, "--json"});
  EXPECT_EQ(1, run.m_Status);
  json document = json::parse(run.m_Out);
  json const& stream = ObjectAt(document, sample.m_Stream);
  EXPECT_EQ(2u, stream.at("items").size());
  std::string error = stream.at("error");
  EXPECT_NE(std::string::npos, error.find("Bad type from Tagged Stream")) << error;
  std::string const corrupt =
      "rfm_ArrayRepr::rfm_ArrayRepr: Array object in ZDB/ZAE file is corrupt.  File may be unusable.";
  EXPECT_EQ(json::parse(R"({"handle":)" + std::to_string(sample.m_Ints) +
                        R"(,"kind":"unknown array","error":")" + corrupt + R"("})"),
            ObjectAt(document, sample.m_Ints));
  EXPECT_EQ("zdb dump: " + sample.m_Name + ": handle " + std::to_string(sample.m_Ints) + ": " + corrupt + "\n" +
                "zdb dump: " + sample.m_Name + ": handle " + std::to_string(sample.m_Stream) + ": " + error + "\n",
            run.m_Err);
  EXPECT_EQ(4u, ObjectAt(document, sample.m_Parts).at("rows").size()) << "the other objects are dumped in full";
}
