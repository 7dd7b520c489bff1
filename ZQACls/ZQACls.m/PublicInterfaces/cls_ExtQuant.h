#ifndef cls_ExtQuant_h
#define cls_ExtQuant_h

#include "ZQABasExport.h"
#include "cow_String.h"
#include "thr_ThreadSingleton.h"

#include <map>
#include <string>

// Extent quanta of the object layer's tables and arrays, by name: how much a
// stored collection grows at a time. An application may set a quantum for a
// name on its thread; unset names answer the default their user gives.
class ZQA_EXPORT cls_ExtQuant : public thr_ThreadSingleton<cls_ExtQuant> {
public:
  // The quantum of tables of middling growth, such as those of the object
  // layer's internal classes.
  static constexpr int kMedium = 64;

  int ExtentQuantum(cow_String const& name, int defaultQuantum) const;
  int ExtentQuantumConstMedium() const { return kMedium; }
  // Sets the quantum for name; a quantum below 1 removes the setting.
  void SetExtentQuantum(cow_String const& name, int quantum);

private:
  std::map<std::string, int> m_Quanta;
};

#endif
