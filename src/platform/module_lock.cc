#include "platform/module_lock.h"

#include <atomic>

namespace corvane {
namespace {

std::atomic<long> g_lockCount{0};

}  // namespace

void ModuleLock() { g_lockCount.fetch_add(1); }
void ModuleUnlock() { g_lockCount.fetch_sub(1); }
long ModuleLockCount() { return g_lockCount.load(); }

}  // namespace corvane
