#pragma once
// The failures of the whole library family. Every failure derives from RTE::Exception, carries a
// text, the source location it was raised at, and logs itself (log()) before it is thrown.
// Raise them through RTE_THROW / RTE_THROW_MSG so that location and logging are never forgotten.

#include <RTE/Export.h>

#include <QString>
#include <QTextStream>

#include <cstddef>
#include <exception>
#include <string>
#include <tuple>
#include <utility>

class QIODevice;

namespace RTE {

class RTE_API Exception : public std::exception {
public:
    Exception();
    explicit Exception(const QString& message);
    ~Exception() override;

    // The text; what() gives the same as UTF-8 and stays valid as long as the exception.
    QString message() const;
    const char* what() const noexcept override;

    // Where it was raised; file is usually __FILE__ (shortened to its file name).
    void setLocation(const QString& file, unsigned line);
    QString file() const;
    unsigned line() const;

    // Writes "<file>:<line>: <message>" at error level to the logger "Exception".
    void log() const;

protected:
    void setMessage(const QString& message);

private:
    QString m_message;
    std::string m_what;
    QString m_file;
    unsigned m_line = 0;
};

// An operation the object can never perform.
class RTE_API LogicError : public Exception {
public:
    LogicError();
};

// A precondition of a call was not met.
class RTE_API PreconditionFailed : public Exception {
public:
    explicit PreconditionFailed(const QString& message);
};

// A failed check of an argument or an assumption.
class RTE_API VerificationFailed : public Exception {
public:
    VerificationFailed();
    explicit VerificationFailed(const QString& message);
};

// Base of file failures.
class RTE_API FileError : public Exception {
public:
    FileError();
    explicit FileError(const QString& message);
};

// A file that could not be written. The device form appends the device's error string.
class RTE_API FileWriteError : public FileError {
public:
    explicit FileWriteError(const QString& message);
    FileWriteError(const QIODevice& device, const QString& message);
};

namespace Private {
// Builds an exception text with a QTextStream, as RTE_THROW_MSG does.
class RTE_API MessageBuilder {
public:
    MessageBuilder();
    QTextStream& stream() { return m_stream; }
    const QString& text() const { return m_text; }

private:
    QString m_text;
    QTextStream m_stream;
};

inline QTextStream& operator<<(QTextStream& s, const std::string& text)
{
    return s << QString::fromStdString(text);
}

// RTE_THROW takes the exception type and its constructor arguments as one list, so that a type
// constructed from nothing (RTE_THROW(RTE::LogicError)) needs no empty argument list. The macro
// appends ArgumentsEnd to the arguments, and MakeException constructs from all others.
struct ArgumentsEnd {};

template <class ExceptionType, class Arguments, std::size_t... I>
ExceptionType MakeExceptionFrom(Arguments&& arguments, std::index_sequence<I...>)
{
    return ExceptionType(std::get<I>(std::move(arguments))...);
}

template <class ExceptionType, class... A>
ExceptionType MakeException(A&&... arguments)
{
    return MakeExceptionFrom<ExceptionType>(std::forward_as_tuple(std::forward<A>(arguments)...),
                                            std::make_index_sequence<sizeof...(A) - 1>{});
}
} // namespace Private

} // namespace RTE

#define RTE_PRIVATE_EXPAND(x) x
#define RTE_PRIVATE_FIRST(first, ...) first
#define RTE_PRIVATE_REST(first, ...) __VA_ARGS__

// RTE_THROW(ExceptionType, args...) throws ExceptionType(args...) with this file and line,
// logging it first. The arguments may be left out: RTE_THROW(RTE::LogicError).
#define RTE_THROW(...)                                                                             \
    do {                                                                                           \
        auto rte_exception_ = ::RTE::Private::MakeException<RTE_PRIVATE_EXPAND(                    \
            RTE_PRIVATE_FIRST(__VA_ARGS__, ~))>(RTE_PRIVATE_EXPAND(                                \
            RTE_PRIVATE_REST(__VA_ARGS__, ::RTE::Private::ArgumentsEnd())));                       \
        rte_exception_.setLocation(QStringLiteral(__FILE__), __LINE__);                            \
        rte_exception_.log();                                                                      \
        throw rte_exception_;                                                                      \
    } while (false)

// Throws ExceptionType with a text streamed through a QTextStream, e.g.
//   RTE_THROW_MSG(RTE::Exception, "Invalid context '" << context << "'");
#define RTE_THROW_MSG(ExceptionType, streamed)                                                     \
    do {                                                                                           \
        ::RTE::Private::MessageBuilder rte_builder_;                                               \
        {                                                                                          \
            using ::RTE::Private::operator<<;                                                      \
            rte_builder_.stream() << streamed;                                                     \
        }                                                                                          \
        rte_builder_.stream().flush();                                                             \
        RTE_THROW(ExceptionType, rte_builder_.text());                                             \
    } while (false)

// Checks a condition and raises RTE::VerificationFailed with the given text when it does not hold.
#define RTE_VERIFY(condition, text)                                                                \
    do {                                                                                           \
        if (!(condition))                                                                          \
            RTE_THROW(::RTE::VerificationFailed, QStringLiteral(text));                            \
    } while (false)
