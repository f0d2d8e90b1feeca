#pragma once
// Settings trees and file helpers shared by the settings document tests.

#include <Storage/SettingsNode.h>

#include <QString>

#include <string>
#include <vector>

namespace SettingsTestData {

// Strings that stress the document's escaping: markup characters, blanks that attribute
// normalisation would change, characters XML 1.0 cannot carry, and non-BMP text.
inline std::vector<QString> AwkwardStrings()
{
    return {QString(),
            QStringLiteral("plain"),
            QStringLiteral("<tag attr=\"x\">&amp; 'q'</tag>"),
            QStringLiteral("  leading and trailing  "),
            QStringLiteral("tab\there\nline\r\ncr\rend"),
            QString(QChar(0)) + QStringLiteral("nul"),
            QStringLiteral("ctrl\x01\x1f\x7f"),
            QString(QChar(0xD800)) + QStringLiteral("lone high"),
            QStringLiteral("lone low") + QString(QChar(0xDC00)),
            QString(QChar(0xDC00)) + QString(QChar(0xD800)),
            QString(QChar(0xFFFE)) + QString(QChar(0xFFFF)),
            QString::fromUtf8("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 mixed"),
            QString(3000, QLatin1Char('x')),
            QStringLiteral("]]> --> <!-- <?pi?>")};
}

// A tree of `levels` levels with every kind of value at each level and several children per node.
inline Storage::SettingsNode RichTree(int levels = 12)
{
    const std::vector<QString> awkward = AwkwardStrings();
    Storage::SettingsNode top(QStringLiteral("Acquisition"));
    top.SetClass(QStringLiteral("CameraSetup"));
    top.SetVersion(-3);
    Storage::Settings* level = &top;
    for (int depth = 0; depth < levels; ++depth) {
        level->SetValue(QStringLiteral("z first"), QStringLiteral("order is insertion, not alphabetical"));
        level->SetInt(QStringLiteral("int"), depth - 6);
        level->SetInt64(QStringLiteral("int64"), Q_INT64_C(-9007199254740993));
        level->SetDouble(QStringLiteral("double"), 1.0 / (depth + 3));
        level->SetDouble(QStringLiteral("negative zero"), -0.0);
        level->SetBool(QStringLiteral("bool"), depth % 2 == 0);
        level->SetStringList(QStringLiteral("list"), {QStringLiteral("a;b"), QString(), QStringLiteral("c\\")});
        level->SetStringList(QStringLiteral("empty list"), {});
        for (std::size_t i = 0; i < awkward.size(); ++i) {
            level->SetValue(QStringLiteral("awkward %1").arg(i), awkward[i]);
            level->SetValue(awkward[i] + QStringLiteral(" as name"), QString::number(i));
        }
        for (std::size_t i = 0; i < awkward.size(); ++i) {
            Storage::Settings& child = level->AddChild(awkward[i]);
            child.SetClass(awkward[awkward.size() - 1 - i]);
            child.SetVersion(static_cast<int>(i) * 1000);
        }
        level->AddChild(QStringLiteral("same")).SetValue(QStringLiteral("which"), QStringLiteral("first"));
        level->AddChild(QStringLiteral("same")).SetValue(QStringLiteral("which"), QStringLiteral("second"));
        level = &level->AddChild(QStringLiteral("level %1").arg(depth + 1));
        level->SetVersion(depth == 5 ? 2147483647 : -2147483647 - 1);
    }
    return top;
}

inline QString Q(const std::string& path) { return QString::fromStdString(path); }

} // namespace SettingsTestData
