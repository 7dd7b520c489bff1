#include "uti_Redirection.h"

#include "ZQABasAssert.h"

#include <unistd.h>

namespace {
char const kSourcePath[] = "ZQABas/ZQABasSpawn.m/src/uti_Redirection";
}

uti_Redirection::uti_Redirection(cow_String const& kind, cow_String const& target) : m_Kind(kind), m_Target(target) {
  ZQA_ASSERT(kSourcePath, m_Kind == kStandardError);
  ZQA_ASSERT(kSourcePath, !m_Target.Empty());
}

int uti_Redirection::ChildDescriptor() const noexcept { return STDERR_FILENO; }
