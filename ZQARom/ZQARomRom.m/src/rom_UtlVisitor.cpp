#include "rom_UtlVisitor.h"

rom_UtlVisitor::~rom_UtlVisitor() = default;

int rom_UtlVisitor::AcceptObjectBeforeCopy(unsigned int, int) { return -1; }

void rom_UtlVisitor::AcceptObjectAfterCopy(rfm_Row&, rfm_Row&, unsigned int) {}

void rom_UtlVisitor::AcceptMapRowAfterCopy(rfm_Row&) {}
