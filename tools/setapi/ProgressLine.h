#pragma once
// The progress of a copy as one line on a terminal, rewritten in place.

#include <ostream>
#include <string>

namespace SetApiTool {

// The figures of a copy at one moment. The totals are counted before the copy starts and may still
// grow while the line is first shown.
struct S_CopyProgress {
    int totalFiles = 0;
    int copiedFiles = 0;
    unsigned long long totalBytes = 0;
    unsigned long long copiedBytes = 0;
    double seconds = 0; // since the copy started
};

// "12/1000 files, 12.6/1048.6 MB, 350.2 MB/s, 0:03 left" (MB are 10^6 bytes). The rate is the
// average since the start; rate and time left are "--" while no byte has been copied yet.
std::string FormatCopyProgress(const S_CopyProgress& progress);

// A line that each Show overwrites: a carriage return, the text, and blanks over whatever the
// previous, longer text left. Finish ends the line, if one was shown.
class ProgressLine {
public:
    explicit ProgressLine(std::ostream& out);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void Show(const std::string& text);
    void Finish();

private:
    std::ostream& m_out;
    std::size_t m_shownLength = 0;
    bool m_open = false;
};

} // namespace SetApiTool
