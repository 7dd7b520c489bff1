#include "rfm_FuzzInput.h"

#include "ZQABasException.h"
#include "rfm_Database.h"
#include "rfm_SampleDatabase.h"
#include "rfm_Space.h"
#include "rfm_TaggedStream.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

std::string g_Directory;

void RemoveDirectory() {
  for (char const* name : {"plain.zdb", "compressed.zdb", "stream.zdb", "transporter.zdb"}) {
    std::remove((g_Directory + "/" + name).c_str());
  }
  ::rmdir(g_Directory.c_str());
}

}  // namespace

cow_String rfm_FuzzInput::ScratchFile(char const* name) {
  if (g_Directory.empty()) {
    char const* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/rfm_fuzz-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    g_Directory = pattern;
    std::atexit(RemoveDirectory);
  }
  return cow_String((g_Directory + "/" + name).c_str());
}

void rfm_FuzzInput::WriteFile(cow_String const& path, std::uint8_t const* data, std::size_t size) {
  std::ofstream out(path.CStr(), std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<char const*>(data), static_cast<std::streamsize>(size));
}

void rfm_FuzzInput::Expect(std::function<void()> const& body) {
  try {
    body();
  } catch (ZQABasException const&) {
  }
}

void rfm_FuzzInput::WriteStreamDatabase(cow_String const& path, std::string const& bytes) {
  std::remove(path.CStr());
  rfm_Database database = rfm_Database::Create(rfm_File::Open(path, utl_FileAccessCreate, false), "FUZZ", "", 0);
  rfm_TaggedStream sample = database.TaggedStream(0);
  rfm_SampleDatabase::WriteItems(sample, sample.Handle());
  sample.Flush();
  rfm_Space fuzzed = database.Space(-1);
  if (!bytes.empty()) fuzzed.Write(bytes.data(), static_cast<int>(bytes.size()));
}
