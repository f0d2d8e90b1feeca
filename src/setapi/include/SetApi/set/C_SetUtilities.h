#pragma once
// The line reader and writer of set files (docs/formats/set-file.md) and the name rules every set
// name passes. A class of static functions.

#include <SetApi/Export.h>

#include <memory>
#include <string>

namespace BufferApi { class I_Buffer; }

namespace SetApi {

class C_DataSetParameter;
class I_Set;

class SETAPI_API C_SetUtilities {
public:
    C_SetUtilities() = delete;

    // Reads every "Set..." parameter line of the file into `parameters`, ignoring groups; lines
    // that cannot be read are skipped. False (parameters unchanged) if the file cannot be opened.
    static bool ReadSetGroupVariables(const std::string& file, C_DataSetParameter& parameters);

    // Writes the header with `file` as given, the group "Sets" and every parameter in order, then
    // a line end and `trailer` if it is not empty. False only if the file cannot be opened.
    static bool WriteSettings(const std::string& file, const C_DataSetParameter& parameters,
                              const std::string& trailer);

    // The value between the first '=' and the last ';', blanks trimmed. isString is set when the
    // value ends in a double quote; a leading quote is dropped either way, and a string's escapes
    // are resolved. False (value untouched, isString cleared) if '=' or ';' is missing.
    static bool ParseLine(const char* line, std::string& value, bool& isString);

    // Parses the line and stores its value under `name`: a string as text; a number into an
    // existing double as double, otherwise as int (a new numeric key is always an int). A value of
    // the wrong kind for an existing key is dropped.
    static void AddParameter(C_DataSetParameter& parameters, const std::string& name, const std::string& line);

    // Escapes exactly the six characters " \ CR LF TAB FF as \" \\ \r \n \t \f.
    static void ConvertToFileString(const std::string& in, std::string& out);
    // Resolves those six escapes; a backslash before any other character is dropped with it.
    static void ConvertFromFileString(const std::string& in, std::string& out);

    // The form in which set names are held: '\' becomes '/', trailing blanks then dots go, and a
    // final ".set" (any case) is cut when the name has at least five characters.
    static std::string PrepareSetName(std::string name);
    // Trailing blanks and dots trimmed; a ".set" or ".exp" ending (any case) is cut, setting
    // *isExperiment (if given) for ".exp". The cut keeps the length of `name` BEFORE trimming minus
    // four, so a name with trailing blanks keeps a part of its extension; callers rely on this.
    static std::string PrepareName(const std::string& name, bool* isExperiment);
    // Cuts behind the last character other than c; a text made of c only stays as it is.
    static void TrimRight(std::string& text, char c);
    // The number from the first digit on (or 0 without digits), minus one; 0 for numbers below 1.
    // So "B00001.im7" gives 0, and the numbers 0 and 1 both give 0. Saturates at the unsigned range.
    static unsigned GetIndexFromFileName(const std::string& fileName);
    // Removes every plain file of the folder whose extension is not "set" (any case). Sub-folders
    // and the set files of child sets stay. File-system failures raise RTE::FileError.
    static void ClearSetDirectory(const std::string& folder);
    // Copies every file of the folder `source` into the folder `target` (which must exist), and
    // its sub-folders too when `recursive`; a file of the same name in the target is replaced.
    // Runs a C_CopyFiles and waits for it. False if a file could not be copied; what was copied
    // before stays.
    static bool CopyFiles(std::string source, std::string target, bool recursive);

    // Grows the set to `count` buffers by appending `fill` (or, when null, a copy of the set's last
    // buffer; an empty set then raises RTE::Exception), and shrinks a set of more than `count`
    // buffers (only when count > 0) by RemoveBuffer(GetSize()) calls. A plain set refuses that
    // index, so shrinking works only on set classes that accept it; this is kept so.
    static void ResizeSet(std::shared_ptr<I_Set> set, int count, BufferApi::I_Buffer* fill);
};

} // namespace SetApi
