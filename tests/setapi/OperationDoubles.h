#pragma once
// Stand-ins for the host's side of the long operations: a repair dialog that always says yes, a
// control that never cancels, and feedback that is not shown. No GoogleTest here: the operation
// child program uses them too.

#include <SetApi/stream/RepairCorruptStreamSet.h>

#include <RTE/ActivityControl.h>
#include <RTE/ActivityFeedback.h>

#include <QString>
#include <QStringList>

#include <string>

namespace OperationTesting {

struct YesDialog : SetApi::RepairCorruptStreamSetDialog {
    void AddCorruption(const QString&) override {}
    void SetConsequences(const QStringList&) override {}
    bool ConfirmRepair() override { return true; }
    void ReportRepairFailure(const std::string&, const QString& message) override { failure = message.toStdString(); }
    std::string failure;
};

struct NeverCancel : RTE::I_ActivityControl {
    bool IsCancelled() const override { return false; }
};

struct QuietFeedback : RTE::I_ActivityFeedback {
    void SetProgress(double) override {}
    void SetStatusText(const std::string& text) override { last = text; }
    std::string last;
};

} // namespace OperationTesting
