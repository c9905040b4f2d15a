#include "cli/ProgressBar.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace teskcolor {

CProgressBar::CProgressBar(std::string label)
    : m_label(std::move(label)), m_bEnabled(isatty(STDERR_FILENO) == 1 && !std::getenv("TESKCOLOR_NO_PROGRESS")) {
    if (m_bEnabled) m_status.AttachSink(this);
}

CProgressBar::~CProgressBar() { Finish(); }

void CProgressBar::Phase(std::string label) {
    m_label = std::move(label);
    m_nLastPercent = -1;
}

void CProgressBar::Finish() {
    if (m_bDrawn) std::fprintf(stderr, "\r\033[K");
    m_bDrawn = false;
    m_nLastPercent = -1;
}

void CProgressBar::OnProgress(long long position, long long range) {
    if (range <= 0) return;
    const int percent = int(position * 100 / range);
    if (percent == m_nLastPercent) return;
    m_nLastPercent = percent;
    constexpr int kWidth = 30;
    const int filled = percent * kWidth / 100;
    std::fprintf(stderr, "\r%-10s [%.*s%*s] %3d%%", m_label.c_str(), filled, "##############################",
                 kWidth - filled, "", percent);
    std::fflush(stderr);
    m_bDrawn = true;
}

}  // namespace teskcolor
