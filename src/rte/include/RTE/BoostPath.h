#pragma once
// The library's paths are UTF-8 strings whatever the platform's narrow encoding is; these turn
// them into boost::filesystem paths and back, for code that walks folders with boost itself.

#include <QString>

#include <boost/filesystem/path.hpp>

#include <string>

namespace RTE {

inline boost::filesystem::path ToBoostPath(const std::string& utf8)
{
#if defined(_WIN32)
    return boost::filesystem::path(QString::fromStdString(utf8).toStdWString());
#else
    return boost::filesystem::path(utf8);
#endif
}

// With '/' between the parts.
inline std::string FromBoostPath(const boost::filesystem::path& path)
{
#if defined(_WIN32)
    return QString::fromStdWString(path.generic_wstring()).toStdString();
#else
    return path.generic_string();
#endif
}

} // namespace RTE
