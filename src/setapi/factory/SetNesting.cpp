#include "SetNesting.h"

#include <RTE/String.h>

#include <QString>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

namespace SetApi {
namespace Private {
namespace {

// The absolute, lexically normalised form in upper case, with a '/' at the end.
std::string FolderKey(const std::string& name)
{
    namespace fs = boost::filesystem;
#if defined(_WIN32)
    const fs::path path(QString::fromStdString(name).toStdWString());
#else
    const fs::path path(name);
#endif
    boost::system::error_code ec;
    const fs::path base = fs::current_path(ec); // a working folder that is gone leaves names as given
    const fs::path absolute = (ec ? path : fs::absolute(path, base)).lexically_normal();
#if defined(_WIN32)
    std::string key = QString::fromStdWString(absolute.generic_wstring()).toStdString();
#else
    std::string key = absolute.generic_string();
#endif
    if (key.empty() || key.back() != '/')
        key += '/';
    RTE::String::ToUpper(key);
    return key;
}

} // namespace

bool IsInsideSetFolder(const std::string& inner, const std::string& outer)
{
    if (inner.empty() || outer.empty())
        return false;
    const std::string innerKey = FolderKey(inner);
    const std::string outerKey = FolderKey(outer);
    return innerKey.size() > outerKey.size() && innerKey.compare(0, outerKey.size(), outerKey) == 0;
}

} // namespace Private
} // namespace SetApi
