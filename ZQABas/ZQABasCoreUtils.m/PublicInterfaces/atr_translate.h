#ifndef atr_translate_h
#define atr_translate_h

#include "atr_String.h"

// Every user-visible message passes through atr_translate before it is
// formatted. Without a translator installed the text is returned unchanged.
using atr_Translator = atr_String (*)(char const* text);

ZQA_EXPORT atr_String atr_translate(char const* text);

// Installs the translator (null restores the identity) and returns the one
// it replaces.
ZQA_EXPORT atr_Translator atr_SetTranslator(atr_Translator translator);

#endif
