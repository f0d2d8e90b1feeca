#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <QFileInfo>
#include <QIODevice>

namespace RTE {

Exception::Exception() = default;

Exception::Exception(const QString& message) { setMessage(message); }

Exception::~Exception() = default;

QString Exception::message() const { return m_message; }

const char* Exception::what() const noexcept { return m_what.c_str(); }

void Exception::setMessage(const QString& message)
{
    m_message = message;
    m_what = message.toStdString();
}

void Exception::setLocation(const QString& file, unsigned line)
{
    m_file = QFileInfo(file).fileName();
    m_line = line;
}

QString Exception::file() const { return m_file; }

unsigned Exception::line() const { return m_line; }

void Exception::log() const
{
    const C_Logger logger("Exception");
    if (!logger.isEnabled(LogLevel::Error))
        return;
    std::string text;
    if (!m_file.isEmpty())
        text = m_file.toStdString() + ":" + std::to_string(m_line) + ": ";
    text += m_what;
    logger.error(text);
}

LogicError::LogicError() = default;

PreconditionFailed::PreconditionFailed(const QString& message) : Exception(message) {}

VerificationFailed::VerificationFailed() = default;

VerificationFailed::VerificationFailed(const QString& message) : Exception(message) {}

FileError::FileError() = default;

FileError::FileError(const QString& message) : Exception(message) {}

FileWriteError::FileWriteError(const QString& message) : FileError(message) {}

FileWriteError::FileWriteError(const QIODevice& device, const QString& message)
    : FileError(message + QStringLiteral(": ") + device.errorString())
{
}

namespace Private {
MessageBuilder::MessageBuilder() : m_stream(&m_text) {}
} // namespace Private

} // namespace RTE
