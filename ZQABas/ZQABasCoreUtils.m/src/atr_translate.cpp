#include "atr_translate.h"

#include <atomic>

namespace {
std::atomic<atr_Translator> g_Translator{nullptr};
}

atr_String atr_translate(char const* text) {
  atr_Translator translator = g_Translator.load(std::memory_order_acquire);
  return translator ? translator(text) : atr_String(text);
}

atr_Translator atr_SetTranslator(atr_Translator translator) {
  return g_Translator.exchange(translator, std::memory_order_acq_rel);
}
