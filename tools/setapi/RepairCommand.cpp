// setapi repair: the repair dialog on a terminal.

#include "Commands.h"
#include "SetArguments.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/stream/RepairCorruptStreamSet.h>
#include <SetApi/stream/StreamSet.h>

#include <RTE/Exception.h>

#include <QStringList>

#include <iostream>
#include <unistd.h>

namespace SetApiTool {

namespace {

// Prints what is wrong and what a repair would do; asks on a terminal, or takes the answer given.
class TerminalDialog : public SetApi::RepairCorruptStreamSetDialog {
public:
    TerminalDialog(const S_RepairAnswer& answer, std::istream& in, std::ostream& out)
        : m_answer(answer), m_in(in), m_out(out)
    {
    }

    void AddCorruption(const QString& corruption) override { m_out << "damage: " << corruption.toStdString() << '\n'; }
    void SetConsequences(const QStringList& consequences) override
    {
        for (const QString& consequence : consequences)
            m_out << "  " << consequence.toStdString() << '\n';
    }
    bool ConfirmRepair() override
    {
        if (m_answer.yes)
            return true;
        if (!m_answer.ask) {
            m_out << "not repaired: no terminal to ask on; give --yes to repair\n";
            return false;
        }
        m_out << "Repair? [y/N] " << std::flush;
        std::string line;
        std::getline(m_in, line);
        return line == "y" || line == "Y" || line == "yes";
    }
    void ReportRepairFailure(const std::string& setName, const QString& message) override
    {
        failure = "the repair of '" + setName + "' failed: " + message.toStdString();
    }

    std::string failure;

private:
    S_RepairAnswer m_answer;
    std::istream& m_in;
    std::ostream& m_out;
};

} // namespace

int RunRepair(const std::string& path, const S_RepairAnswer& answer, std::istream& in, std::ostream& out)
{
    const std::shared_ptr<SetApi::I_Set> set = OpenExistingSet(path);
    const std::shared_ptr<SetApi::Private::StreamSet> streamSet = SetApi::Private::CastToStreamSet(set);
    if (!streamSet)
        RTE_THROW_MSG(RTE::Exception, "'" << path << "' is no recording (stream set): there is nothing to repair");
    TerminalDialog dialog(answer, in, out);
    switch (SetApi::RepairCorruptStreamSet(set, dialog)) {
    case SetApi::RepairCorruptStreamSetState::NotCorrupt:
        out << "'" << set->GetName() << "' is intact: nothing to repair (" << set->GetSize() << " images)\n";
        return 0;
    case SetApi::RepairCorruptStreamSetState::RepairDeclined:
        out << "nothing changed\n";
        return DeclinedExitCode;
    case SetApi::RepairCorruptStreamSetState::RepairFailed:
        RTE_THROW_MSG(RTE::Exception, QString::fromStdString(dialog.failure));
    case SetApi::RepairCorruptStreamSetState::Repaired:
        break;
    }
    out << "repaired '" << set->GetName() << "': dropped \"" << streamSet->GetDetailsOfRepair().toStdString()
        << "\"; " << streamSet->GetSize() << " images"
        << (streamSet->IsCorrupt() ? " (images that not every camera recorded cannot come back)" : "") << '\n';
    return 0;
}

int RunRepair(const std::string& path, bool yes)
{
    return RunRepair(path, S_RepairAnswer{yes, isatty(STDIN_FILENO) != 0}, std::cin, std::cout);
}

} // namespace SetApiTool
