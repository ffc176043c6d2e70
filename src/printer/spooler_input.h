// The spooler's functions take their input without const, and do not change it.
#pragma once

template <typename T>
T* SpoolerInput(const T* input) noexcept {
    return const_cast<T*>(input);
}
