#include "rom_Counter.h"

#include "ZQABasAssert.h"

namespace {
char const kSourcePath[] = "ZQARom/ZQARomRom.m/src/rom_Counter";
}

void rom_Counter::AssertPositive() const {
  if (m_References < 1) nex_ThrowAssertion(kSourcePath, __LINE__, "references > 0");
}

void rom_Counter::AbortNoValue() { nex_ThrowAssertion(kSourcePath, __LINE__, "CountedHld has no value"); }
