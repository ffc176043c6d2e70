// What the host asks of the private settings record: a default record, the conversion of another source's
// record and its validation.
#pragma once

#include "devmode/oemdev.h"

// The driver log's folder below the root of the system drive.
constexpr StringView16 kLogSubFolder = TEXT16("VELDDriverlog\\KVM-R72");

// A record starts with 12 readable bytes of header; `dwSize` says how much the other side claims to have,
// which nothing here trusts beyond the 1976 bytes of a record.

// Writes the default record. Bytes that have no default keep what they held. Null does nothing.
void SetDefaultOEMDev(POEMDEV pOEMDevOut) noexcept;

// Brings `in` into the current format in `out` (1976 writable bytes with a header). A foreign signature gives
// the default record. `in` is read for no more than its own size, and may be `out`. FALSE only when either is
// null.
bool ConvertOEMDevmode(const OEMDEV* pOEMDevIn, POEMDEV pOEMDevOut) noexcept;

// Sets the header to the current format and drops driver data above 100. FALSE only for null.
bool ValidateOEMDev(POEMDEV pOEMDev) noexcept;

// Traces the record's first fields, or that it is not one of ours.
void Dump(const OEMDEV* pOEMDev) noexcept;
