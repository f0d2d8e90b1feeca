#pragma once
// Storage::Settings: the abstract base of a settings object. A settings object has a name, a class
// and a version, an ordered list of named text values and an ordered list of named children, which
// are settings objects themselves. Value names are unique within one object; child names may
// repeat. Values are stored as text; the typed accessors below fix one spelling per type so that
// typed values survive a document round trip exactly (doubles bit for bit).
//
// Thread-safety: a settings object is not shared between threads. Distinct objects may be used
// from different threads at once.

#include <RTE/Export.h>

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <memory>

namespace Storage {

class RTE_API Settings {
public:
    virtual ~Settings();

    virtual QString GetName() const = 0;
    virtual void SetName(const QString& name) = 0;
    virtual QString GetClass() const = 0;
    virtual void SetClass(const QString& className) = 0;
    virtual int GetVersion() const = 0;
    virtual void SetVersion(int version) = 0;

    // The names of the values in the order in which they were first set.
    virtual QStringList GetValueNames() const = 0;
    virtual bool HasValue(const QString& name) const = 0;
    // The value's text, or defaultValue if there is no value of that name.
    virtual QString GetValue(const QString& name, const QString& defaultValue = QString()) const = 0;
    // Replacing an existing value keeps its place in the order; a new value goes to the end.
    virtual void SetValue(const QString& name, const QString& value) = 0;
    // Whether there was a value to remove.
    virtual bool RemoveValue(const QString& name) = 0;

    virtual int GetChildCount() const = 0;
    // The child at a zero-based index; an index out of range raises RTE::VerificationFailed.
    virtual const Settings& GetChild(int index) const = 0;
    virtual Settings& GetChild(int index) = 0;
    // The first child of that name, or null.
    virtual const Settings* FindChild(const QString& name) const = 0;
    virtual Settings* FindChild(const QString& name) = 0;
    // Appends an empty child of that name and returns it; it lives as long as it is not removed.
    virtual Settings& AddChild(const QString& name) = 0;
    // Removes and destroys the child at the index; out of range raises RTE::VerificationFailed.
    virtual void RemoveChild(int index) = 0;

    // A deep, independent copy of the content (never bound to a file).
    virtual std::unique_ptr<Settings> Clone() const = 0;

    // Typed convenience. A getter answers defaultValue when the value is missing or does not
    // read as the type; see docs/formats/settings-document.md for the spellings.
    int GetInt(const QString& name, int defaultValue) const;
    void SetInt(const QString& name, int value);
    qint64 GetInt64(const QString& name, qint64 defaultValue) const;
    void SetInt64(const QString& name, qint64 value);
    // Bit-exact, including -0, infinities and NaN payloads.
    double GetDouble(const QString& name, double defaultValue) const;
    void SetDouble(const QString& name, double value);
    bool GetBool(const QString& name, bool defaultValue) const;
    void SetBool(const QString& name, bool value);
    // Keeps every item exactly, empty items and an empty list included.
    QStringList GetStringList(const QString& name, const QStringList& defaultValue) const;
    void SetStringList(const QString& name, const QStringList& value);

    // Makes this object an exact copy of the content of source (name, class, version, values and
    // children). Copying an object into itself changes nothing.
    void CopyFrom(const Settings& source);
    // Appends a deep copy of source as the last child and returns it.
    Settings& AddCopy(const Settings& source);

protected:
    Settings() = default;
    Settings(const Settings&) = default;
    Settings& operator=(const Settings&) = default;
};

// Whether two settings objects hold the same content: name, class, version, values with their
// order, and children with their order, compared recursively and code unit for code unit.
RTE_API bool AreEqual(const Settings& left, const Settings& right);

} // namespace Storage
