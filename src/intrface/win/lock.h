// One thread at a time. The toolchain's own locks would bring its thread library into the DLL.
#pragma once

#include <windows.h>

// Needs no memory, and may be taken while the module comes or goes. A thread that has it must not ask again.
class Lock {
  public:
    constexpr Lock() noexcept = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    friend class LockScope;

    SRWLOCK lock_ = SRWLOCK_INIT;
};

class LockScope {
  public:
    explicit LockScope(Lock& lock) noexcept : lock_(lock.lock_) { AcquireSRWLockExclusive(&lock_); }
    ~LockScope() { ReleaseSRWLockExclusive(&lock_); }
    LockScope(const LockScope&) = delete;
    LockScope& operator=(const LockScope&) = delete;

  private:
    SRWLOCK& lock_;
};
