// Opens a transporter read-only on a database made of the input, as a
// program of the sample transporter file's classes (rom_TestClasses and the
// test model) does, and reads it whole through rom_TransporterWalk: the
// header, the up-to-date status, every row of every class of the sample
// transporter file, and every object of the model's classes.

#include "rfm_FileReprEncoded.h"
#include "rfm_FuzzInput.h"
#include "rom_SampleTransporterFile.h"
#include "rom_TransporterWalk.h"

namespace {

struct Model {
  Model() { rom_SampleTransporterFile::Register(registrar); }
  cls_ClassRegistrar registrar;
  std::vector<unsigned int> const classes = rom_SampleTransporterFile::Classes();
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static cow_String const path = rfm_FuzzInput::ScratchFile("transporter.zdb");
  static Model const model;
  rfm_FuzzInput::WriteFile(path, data, size);
  // The compressed container's own damage is the compressed target's.
  if (rfm_FileReprEncoded::IsEncoded(path)) return 0;
  rfm_FuzzInput::Expect(
      [] { rom_TransporterWalk::Walk(path, model.registrar, model.classes, rom_TransporterWalk::kReadOnly); });
  return 0;
}
