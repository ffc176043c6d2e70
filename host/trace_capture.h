// Catches what the process writes to the debugger, as a debugger does: debug output travels as an exception,
// which this answers before anything else sees it. Start it before the plug-in is loaded to see process
// attach too.
#pragma once

#include <string>
#include <vector>

// One at a time.
class TraceCapture {
  public:
    TraceCapture();
    ~TraceCapture();
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    // One entry for each call of OutputDebugString so far, line end included.
    std::vector<std::wstring> Lines() const;
    void Clear();

  private:
    void* handler_;
};
