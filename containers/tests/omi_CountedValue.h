#ifndef omi_CountedValue_h
#define omi_CountedValue_h

// A test value that counts its live instances: a container that leaks one
// leaves the count above zero, one that destroys twice drives it below.
struct omi_CountedValue {
  static inline int s_Live = 0;

  omi_CountedValue() : m_Value(0) { ++s_Live; }
  explicit omi_CountedValue(int value) : m_Value(value) { ++s_Live; }
  omi_CountedValue(omi_CountedValue const& other) : m_Value(other.m_Value) { ++s_Live; }
  omi_CountedValue& operator=(omi_CountedValue const&) = default;
  ~omi_CountedValue() { --s_Live; }

  bool operator==(omi_CountedValue const& other) const { return m_Value == other.m_Value; }

  int m_Value;
};

#endif
