// Writes the fuzz targets' seed corpora into a folder given as the only
// argument: one subfolder per target, named after it, holding the sample
// database (plain, or compressed in the usual 64 KiB segments and in
// 4 KiB ones that spread it over many streams) and a small database, or
// the sample's tagged stream, or the sample transporter file and one whose
// catalogue is empty.

#include "rfm_CodecZip.h"
#include "rfm_Database.h"
#include "rfm_FileReprEncoded.h"
#include "rfm_FuzzInput.h"
#include "rfm_SampleDatabase.h"
#include "rfm_Space.h"
#include "rfm_Table.h"
#include "rom_SampleTransporterFile.h"
#include "rom_Transporter.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>

namespace {

std::string ReadFile(cow_String const& path) {
  std::ifstream in(path.CStr(), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void Seed(std::string const& folder, char const* name, std::string const& bytes) {
  ::mkdir(folder.c_str(), 0755);
  std::ofstream((folder + "/" + name).c_str(), std::ios::binary | std::ios::trunc).write(bytes.data(), bytes.size());
}

// A database with one small table, far smaller than the sample.
void WriteSmall(rfm_File const& file) {
  rfm_Database database = rfm_Database::Create(file, "SMPL", "small", 1);
  rfm_TableMetadata definition("Small", 1);
  definition.DefineIntField("Id");
  definition.DefineStringField("Name");
  rfm_Table table = database.Table(definition, -1, -1);
  for (int id = 0; id < 3; ++id) {
    rfm_Row row = table.NewRow();
    row.WriteFieldInt(rfm_FieldHandle("Id", -1), id);
    row.WriteFieldString(rfm_FieldHandle("Name", -1), cow_String("row ").Append(cow_String(id)));
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s corpus-folder\n", argv[0]);
    return 2;
  }
  std::string const corpus = argv[1];
  ::mkdir(corpus.c_str(), 0755);
  cow_String const scratch = rfm_FuzzInput::ScratchFile("plain.zdb");

  // The plain seeds serve zdb check's target too.
  rfm_SampleDatabase::Write(rfm_File::Open(scratch, utl_FileAccessCreate, false));
  for (char const* target : {"/rfm_FuzzPlainDatabase", "/zdb_FuzzCheckAgrees"}) {
    Seed(corpus + target, "sample", ReadFile(scratch));
  }
  std::remove(scratch.CStr());
  WriteSmall(rfm_File::Open(scratch, utl_FileAccessCreate, false));
  for (char const* target : {"/rfm_FuzzPlainDatabase", "/zdb_FuzzCheckAgrees"}) {
    Seed(corpus + target, "small", ReadFile(scratch));
  }

  std::remove(scratch.CStr());
  rfm_SampleDatabase::Write(rfm_File::CreateCompressed(scratch));
  Seed(corpus + "/rfm_FuzzCompressedDatabase", "sample", ReadFile(scratch));
  std::remove(scratch.CStr());
  auto* smallSegments = new rfm_FileReprEncoded(scratch, new rfm_CodecZip(rfm_CodecZip::kDefaultLevel), 4096);
  rfm_SampleDatabase::Write(rfm_File(smallSegments));
  Seed(corpus + "/rfm_FuzzCompressedDatabase", "sample-small-segments", ReadFile(scratch));
  std::remove(scratch.CStr());
  WriteSmall(rfm_File::CreateCompressed(scratch));
  Seed(corpus + "/rfm_FuzzCompressedDatabase", "small", ReadFile(scratch));

  // The sample stream as it lies in the database that the target builds,
  // so that its strings name the same records of the pool.
  std::remove(scratch.CStr());
  rfm_FuzzInput::WriteStreamDatabase(scratch, std::string());
  {
    rfm_Database database = rfm_Database::Open(rfm_File::Open(scratch, utl_FileAccessRead, false), "FUZZ");
    rfm_Space sample = database.Space(rfm_Handle(rfm_FuzzInput::kSampleStream), -1);
    std::string bytes(static_cast<std::size_t>(sample.Length()), '\0');
    sample.Read(bytes.data(), static_cast<int>(bytes.size()));
    Seed(corpus + "/rfm_FuzzTaggedStream", "sample", bytes);
  }

  std::remove(scratch.CStr());
  cls_ClassRegistrar registrar;
  rom_SampleTransporterFile::Register(registrar);
  rom_SampleTransporterFile::Write(registrar, rfm_File::Open(scratch, utl_FileAccessCreate, false));
  Seed(corpus + "/rom_FuzzTransporterFile", "sample", ReadFile(scratch));
  std::remove(scratch.CStr());
  {
    rom_Transporter const empty(registrar, rfm_File::Open(scratch, utl_FileAccessCreate, false),
                                rom_SampleTransporterFile::kMagic, "empty", 1, -1);
  }
  Seed(corpus + "/rom_FuzzTransporterFile", "empty", ReadFile(scratch));
  std::remove(scratch.CStr());
  return 0;
}
