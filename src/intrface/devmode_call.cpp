#include "intrface/devmode_call.h"

#include <cstring>

#include "base/platform.h"
#include "devmode/devmode_record.h"
#include "intrface/win/trace_value.h"

namespace {

void DumpOemDMParam(const OEMDMPARAM& parameter) noexcept {
    TRACE_VERBOSE(L"pOemDMParam:\r\n");
    TRACE_VERBOSE(L"\tcbSize = %d\r\n", parameter.cbSize);
    TRACE_VERBOSE(L"\tpdriverobj = %#x\r\n", TraceValue(parameter.pdriverobj));
    TRACE_VERBOSE(L"\thPrinter = %#x\r\n", TraceValue(parameter.hPrinter));
    TRACE_VERBOSE(L"\thModule = %#x\r\n", TraceValue(parameter.hModule));
    TRACE_VERBOSE(L"\tpPublicDMIn = %#x\r\n", TraceValue(parameter.pPublicDMIn));
    TRACE_VERBOSE(L"\tpPublicDMOut = %#x\r\n", TraceValue(parameter.pPublicDMOut));
    TRACE_VERBOSE(L"\tpOEMDMIn = %#x\r\n", TraceValue(parameter.pOEMDMIn));
    TRACE_VERBOSE(L"\tpOEMDMOut = %#x\r\n", TraceValue(parameter.pOEMDMOut));
    TRACE_VERBOSE(L"\tcbBufSize = %d\r\n", parameter.cbBufSize);
}

// The record that a mode fills, in the host's buffer. A host that names a smaller buffer gets the part that
// fits; hosts that name no size have always given a whole record.
class OutputRecord {
  public:
    explicit OutputRecord(const OEMDMPARAM& parameter) noexcept
        : buffer_(parameter.pOEMDMOut), size_(parameter.cbBufSize) {
        if (IsPartial()) {
            std::memcpy(&whole_, buffer_, size_);
        }
    }
    ~OutputRecord() {
        if (IsPartial()) {
            std::memcpy(buffer_, &whole_, size_);
        }
    }
    OutputRecord(const OutputRecord&) = delete;
    OutputRecord& operator=(const OutputRecord&) = delete;

    OEMDEV* Get() noexcept { return IsPartial() ? &whole_ : static_cast<OEMDEV*>(buffer_); }

  private:
    bool IsPartial() const noexcept { return buffer_ != nullptr && size_ != 0 && size_ < kOemRecordSize; }

    void* buffer_;
    DWORD size_;
    OEMDEV whole_{};
};

void FillRecord(DWORD dwMode, const OEMDMPARAM& parameter) noexcept {
    OutputRecord out(parameter);
    if (dwMode == OEMDM_DEFAULT) {
        TRACE_VERBOSE(L"UI:  pOEMDevOut before setting default values:\r\n");
        SetDefaultOEMDev(out.Get());
        return;
    }
    // A record converted in place is no longer than its buffer, whatever its header says.
    const void* const in = parameter.pOEMDMIn == parameter.pOEMDMOut ? out.Get() : parameter.pOEMDMIn;
    ConvertOEMDevmode(static_cast<const OEMDEV*>(in), out.Get());
    if (dwMode == OEMDM_MERGE) {
        ValidateOEMDev(out.Get());
    }
}

}  // namespace

HRESULT hrDevModeRecord(DWORD dwMode, POEMDMPARAM pOemDMParam) noexcept {
    if (pOemDMParam == nullptr || dwMode < OEMDM_SIZE || dwMode > OEMDM_MERGE) {
        TRACE_ERROR(L"ERROR UI:  DevMode() ERROR_INVALID_PARAMETER.\r\n");
        TRACE_VERBOSE(L"UI:  \tdwMode = %d, pOemDMParam = %#lx.\r\n", dwMode, TraceValue(pOemDMParam));
        SetLastError(ERROR_INVALID_PARAMETER);
        return E_FAIL;
    }
    if (dwMode == OEMDM_SIZE) {
        pOemDMParam->cbBufSize = kOemRecordSize;
    } else {
        FillRecord(dwMode, *pOemDMParam);
    }
    DumpOemDMParam(*pOemDMParam);
    return S_OK;
}
