#include "host/imaging/StatusControl.h"

#include <algorithm>

CStatusControl::CStatusControl(CStatusControl* parent, long long first, long long last)
    : m_pParent(parent), m_bMapped(true), m_nFirst(first), m_nLast(last) {}

void CStatusControl::SetProgressRange(long long range) {
    m_nRange = std::max(range, 0LL);
    m_nPosition = 0;
    m_nReported = -1;
    if (m_pParent && !m_bMapped) m_pParent->SetProgressRange(m_nRange);
}

void CStatusControl::SetProgress(long long position) {
    m_nPosition = std::clamp(position, 0LL, m_nRange);
    if (m_pParent) {
        if (!m_bMapped) m_pParent->SetProgress(m_nPosition);
        else if (m_nRange > 0) m_pParent->SetProgress(m_nFirst + (m_nLast - m_nFirst) * m_nPosition / m_nRange);
        return;
    }
    Report();
}

void CStatusControl::Report() {
    if (!m_pSink || m_nRange <= 0) return;
    // Thousandths, so that a sink sees at most about a thousand calls a range.
    const long long step = m_nPosition * 1000 / m_nRange;
    if (step == m_nReported) return;
    m_nReported = step;
    m_pSink->OnProgress(m_nPosition, m_nRange);
}
