#ifndef uti_Redirection_h
#define uti_Redirection_h

#include "ZQABasExport.h"
#include "cow_String.h"

// Where a spawned child's standard error goes. The one kind understood is
// "2>": standard error written to the target file, which is created or
// truncated. A default redirection changes nothing: the child shares the
// parent's standard error. The file is opened by the spawner, in the parent,
// so that a target that cannot be written fails with the file's name before
// any child is started.
//
// Invariant: Kind() is empty (no redirection) or "2>" with a target that is
// not empty.
class ZQA_EXPORT uti_Redirection {
public:
  static constexpr char kStandardError[] = "2>";

  uti_Redirection() = default;
  // An unknown kind or an empty target is a programming error (an assertion).
  uti_Redirection(cow_String const& kind, cow_String const& target);

  bool IsSet() const noexcept { return !m_Kind.Empty(); }
  cow_String const& Kind() const noexcept { return m_Kind; }
  cow_String const& Target() const noexcept { return m_Target; }
  // The child's descriptor that the target replaces.
  int ChildDescriptor() const noexcept;

private:
  cow_String m_Kind;
  cow_String m_Target;
};

#endif
