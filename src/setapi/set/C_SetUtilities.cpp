#include <SetApi/set/C_SetUtilities.h>

#include <SetApi/set/C_DataSetParameter.h>

#include "NarrowText.h"
#include "SetFileNumbers.h"

#include <RTE/AtomicFileWrite.h>
#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Parameter/Factory.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <limits>
#include <locale>
#include <sstream>

namespace SetApi {

namespace P = RTE::Parameter;

namespace {

std::string UpperAscii(std::string text)
{
    for (char& c : text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

// The last four characters in upper case, for names of at least five characters; else empty.
std::string UpperExtension(const std::string& name)
{
    return name.size() >= 5 ? UpperAscii(name.substr(name.size() - 4)) : std::string();
}

} // namespace

bool C_SetUtilities::ReadSetGroupVariables(const std::string& file, C_DataSetParameter& parameters)
{
    std::ifstream in(RTE::FileSystem::FixPath(file));
    if (!in.is_open())
        return false;
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line[0] == '#' || line[0] == '/')
            continue;
        const std::string name = line.substr(0, line.find(' '));
        if (name.size() < 3 || name.compare(0, 3, "Set") != 0)
            continue;
        AddParameter(parameters, name, line);
    }
    return true;
}

bool C_SetUtilities::WriteSettings(const std::string& file, const C_DataSetParameter& parameters,
                                   const std::string& trailer)
{
    // The text is made in memory and then put in place of the old file in one step: a full disk
    // or a crash leaves the old set file whole, never an empty or half one.
    std::ostringstream out;
    out.imbue(std::locale::classic()); // numbers read back the same whatever the process locale
    out << "// set file <" << file << "> created by Zarvo\n\n#GROUP Sets\n";

    // The nodes in order, straight from the tree: one lookup less per parameter than by name.
    const auto tree = parameters.GetTree();
    std::string escaped;
    for (unsigned i = 0; i < tree->GetChildCount(); ++i) {
        const boost::shared_ptr<P::C_Node> node = tree->GetChildAt(i);
        out << Private::ToNarrow(node->GetName()) << " = ";
        if (const auto text = P::CastToText(node)) {
            ConvertToFileString(Private::ToNarrow(text->GetValue()), escaped);
            out << '"' << escaped << '"';
        } else if (const auto number = P::CastToDouble(node)) {
            out << number->GetValue();
        } else {
            int value = 0;
            parameters.GetValue(Private::ToNarrow(node->GetName()), value);
            out << value;
        }
        out << ";\n";
    }
    if (!trailer.empty())
        out << '\n' << trailer;
    try {
        RTE::WriteFileAtomically(file, out.str());
    } catch (const RTE::FileError&) {
        // Logged where it was raised, naming the file and the reason.
        return false;
    }
    return true;
}

bool C_SetUtilities::ParseLine(const char* line, std::string& value, bool& isString)
{
    isString = false;
    if (!line)
        return false;
    const char* equals = std::strchr(line, '=');
    const char* semicolon = std::strrchr(line, ';');
    if (!equals || !semicolon)
        return false;
    const char* begin = equals + 1;
    const char* end = semicolon;
    while (begin < end && *begin == ' ')
        ++begin;
    while (end > begin && end[-1] == ' ')
        --end;
    std::string text = begin < end ? std::string(begin, end) : std::string(); // ';' before '=': empty
    if (!text.empty() && text.back() == '"') {
        isString = true;
        text.pop_back();
    }
    if (!text.empty() && text.front() == '"')
        text.erase(0, 1);
    if (isString)
        ConvertFromFileString(text, value);
    else
        value = text;
    return true;
}

void C_SetUtilities::AddParameter(C_DataSetParameter& parameters, const std::string& name, const std::string& line)
{
    std::string value;
    bool isString = false;
    if (!ParseLine(line.c_str(), value, isString))
        return;
    const bool exists = parameters.Has(name);
    if (isString) {
        if (exists)
            parameters.SetValue(name, value);
        else
            parameters.Add(name, value);
    } else if (exists && parameters.IsDouble(name)) {
        parameters.SetValue(name, Private::ParseDoubleLikeAtof(value));
    } else if (exists) {
        parameters.SetValue(name, Private::ParseIntLikeAtoi(value));
    } else {
        parameters.Add(name, Private::ParseIntLikeAtoi(value));
    }
}

void C_SetUtilities::ConvertToFileString(const std::string& in, std::string& out)
{
    std::string result;
    result.reserve(in.size());
    for (const char c : in) {
        switch (c) {
        case '"': result += "\\\""; break;
        case '\\': result += "\\\\"; break;
        case '\r': result += "\\r"; break;
        case '\n': result += "\\n"; break;
        case '\t': result += "\\t"; break;
        case '\f': result += "\\f"; break;
        default: result += c; break;
        }
    }
    out.swap(result);
}

void C_SetUtilities::ConvertFromFileString(const std::string& in, std::string& out)
{
    std::string result;
    result.reserve(in.size());
    for (size_t i = 0; i < in.size(); ++i) {
        if (in[i] != '\\') {
            result += in[i];
            continue;
        }
        if (++i == in.size())
            break; // a lone backslash at the end is dropped
        switch (in[i]) {
        case '"': result += '"'; break;
        case '\\': result += '\\'; break;
        case 'r': result += '\r'; break;
        case 'n': result += '\n'; break;
        case 't': result += '\t'; break;
        case 'f': result += '\f'; break;
        default: break; // an unknown escape is dropped with its backslash
        }
    }
    out.swap(result);
}

std::string C_SetUtilities::PrepareSetName(std::string name)
{
    for (char& c : name)
        if (c == '\\')
            c = '/';
    TrimRight(name, ' ');
    TrimRight(name, '.');
    if (UpperExtension(name) == ".SET")
        name.erase(name.size() - 4);
    return name;
}

std::string C_SetUtilities::PrepareName(const std::string& name, bool* isExperiment)
{
    if (isExperiment)
        *isExperiment = false;
    std::string copy = name;
    TrimRight(copy, ' ');
    TrimRight(copy, '.');
    const std::string extension = UpperExtension(copy);
    if (extension != ".SET" && extension != ".EXP")
        return copy;
    if (isExperiment)
        *isExperiment = extension == ".EXP";
    // The length before trimming decides how much stays (at least 5 > 4, so no wrap).
    return copy.substr(0, name.size() - 4);
}

void C_SetUtilities::TrimRight(std::string& text, char c)
{
    const size_t last = text.find_last_not_of(c);
    if (last != std::string::npos)
        text.erase(last + 1);
}

unsigned C_SetUtilities::GetIndexFromFileName(const std::string& fileName)
{
    size_t pos = 0;
    while (pos < fileName.size() && !(fileName[pos] >= '0' && fileName[pos] <= '9'))
        ++pos;
    constexpr unsigned long long kLimit = std::numeric_limits<unsigned>::max() + 1ULL;
    unsigned long long number = 0;
    for (; pos < fileName.size() && fileName[pos] >= '0' && fileName[pos] <= '9'; ++pos)
        number = std::min(number * 10 + static_cast<unsigned>(fileName[pos] - '0'), kLimit);
    return number < 1 ? 0u : static_cast<unsigned>(number - 1);
}

void C_SetUtilities::ClearSetDirectory(const std::string& folder)
{
    for (const std::string& name : RTE::FileSystem::GetFiles(folder, ".*", false, false))
        if (UpperAscii(RTE::FileSystem::ExtractExtension(name, true)) != "SET")
            RTE::FileSystem::RemoveFile(folder + "/" + name);
}

} // namespace SetApi
