// module_lock.h: the lock count of the component library.
//
// Every live object holds one lock from construction to destruction, and
// IClassFactory::LockServer moves the same count; DllCanUnloadNow answers
// S_OK only at 0. The count is atomic because class objects may be called
// from any thread.

#ifndef CORVANE_PLATFORM_MODULE_LOCK_H_
#define CORVANE_PLATFORM_MODULE_LOCK_H_

namespace corvane {

void ModuleLock();
void ModuleUnlock();
long ModuleLockCount();

}  // namespace corvane

#endif  // CORVANE_PLATFORM_MODULE_LOCK_H_
