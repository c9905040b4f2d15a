// Progress of long image work. A status control has a range and a position;
// the root control reports to the sink the host attaches, a control made on
// another one reports through it.
#pragma once
#include "host/imaging/ImagingApi.h"

// Receives progress; the host's display (a progress bar, a status line).
struct IVProgressSink {
    // `position` of `range` steps done. Called when the position enters another
    // thousandth of the range (so the end, too, is always reported).
    virtual void OnProgress(long long position, long long range) = 0;

protected:
    ~IVProgressSink() = default;
};

class VIMAGING_API CStatusControl {
public:
    // A root control; reports nothing until a sink is attached.
    CStatusControl() = default;
    explicit CStatusControl(IVProgressSink* sink) : m_pSink(sink) {}
    // A control that reports its range and position through `parent` as they
    // are (null parent: a control that reports nothing).
    explicit CStatusControl(CStatusControl* parent) : m_pParent(parent) {}
    // A control whose whole range maps onto the parent's positions first..last.
    CStatusControl(CStatusControl* parent, long long first, long long last);

    void AttachSink(IVProgressSink* sink) { m_pSink = sink; }

    void SetProgressRange(long long range);
    void SetProgress(long long position);
    long long GetProgressRange() const { return m_nRange; }
    long long GetProgress() const { return m_nPosition; }

private:
    void Report();

    IVProgressSink* m_pSink = nullptr;
    CStatusControl* m_pParent = nullptr;
    bool m_bMapped = false;
    long long m_nFirst = 0;
    long long m_nLast = 0;
    long long m_nRange = 0;
    long long m_nPosition = 0;
    long long m_nReported = -1;  // last reported position in thousandths, -1 none
};
