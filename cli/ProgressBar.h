// Progress of long work as a bar on standard error, drawn only when standard
// error is a terminal: scripts and logs see nothing of it.
#pragma once
#include <string>

#include "host/imaging/StatusControl.h"

namespace teskcolor {

class CProgressBar : public IVProgressSink {
public:
    explicit CProgressBar(std::string label);
    ~CProgressBar();
    CProgressBar(const CProgressBar&) = delete;
    CProgressBar& operator=(const CProgressBar&) = delete;

    // The root status control to hand to the imaging library and the module.
    CStatusControl* Status() { return &m_status; }
    // Names the next phase ("reading", "writing"); the bar starts again from 0.
    void Phase(std::string label);
    // Clears the bar so that ordinary output can follow on a clean line.
    void Finish();
    void OnProgress(long long position, long long range) override;

private:
    std::string m_label;
    bool m_bEnabled;
    bool m_bDrawn = false;
    int m_nLastPercent = -1;
    CStatusControl m_status;
};

}  // namespace teskcolor
