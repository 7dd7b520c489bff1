#include "rom_UtlPrune.h"

rom_UtlPrune::~rom_UtlPrune() = default;
