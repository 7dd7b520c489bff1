#include "rom_TransporterBase.h"
#include "rom_WIPInterface.h"

rom_TransporterBase::~rom_TransporterBase() = default;

rom_WIPInterface::~rom_WIPInterface() = default;
