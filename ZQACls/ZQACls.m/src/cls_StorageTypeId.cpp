#include "cls_StorageTypeId.h"

#include <atomic>

namespace {
std::atomic<int> g_LastId{0};
}

int cls_StorageTypeId::AllocateId() { return g_LastId.fetch_add(1, std::memory_order_relaxed) + 1; }
