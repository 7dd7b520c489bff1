#include "omi_Singleton.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// Counts its lives; fails its construction while s_Fail is set.
class Registrar : public omi_Singleton<Registrar> {
public:
  static inline int s_Constructed = 0;
  static inline int s_Destroyed = 0;
  static inline bool s_Fail = false;
  int m_Value = 0;

private:
  friend class omi_Singleton<Registrar>;
  Registrar() {
    if (s_Fail) throw std::runtime_error("not now");
    ++s_Constructed;
  }
  ~Registrar() override { ++s_Destroyed; }
};

// Builds a second instance while being built, which takes the pointer.
class Impostor : public omi_Singleton<Impostor> {
public:
  Impostor() {
    static bool nested = false;
    if (!nested) {
      nested = true;
      new Impostor;
    }
  }
};

}  // namespace

TEST(OmiSingletonTest, InstanceIsMadeOnceAndFinalizeEndsIt) {
  // A failed construction leaves no pointer behind to a freed object.
  Registrar::s_Fail = true;
  EXPECT_THROW(Registrar::Instance(), std::runtime_error);
  Registrar::s_Fail = false;

  Registrar& first = Registrar::Instance();
  first.m_Value = 7;
  EXPECT_EQ(&first, &Registrar::Instance());
  EXPECT_EQ(1, Registrar::s_Constructed);

  omi_SingletonBase<Registrar>::Finalize();
  omi_SingletonBase<Registrar>::Finalize();
  EXPECT_EQ(1, Registrar::s_Destroyed);
  EXPECT_EQ(0, Registrar::Instance().m_Value);
  EXPECT_EQ(2, Registrar::s_Constructed);
  Registrar::Finalize();
}

TEST(OmiSingletonDeathTest, SecondInstanceBuiltMeanwhileAborts) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(Impostor::Instance(), "");
}
