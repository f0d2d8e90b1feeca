#include <RTE/Exception.h>

#include <support/TestSupport.h>

#include <QFile>

#include <string>

namespace {

int ThrowAndReturnLine()
{
    const int line = __LINE__ + 1;
    RTE_THROW(RTE::VerificationFailed, QStringLiteral("broken assumption"));
    return line;
}

} // namespace

TEST(ExceptionTest, ThrowSetsLocationAndLogsBeforeThrowing)
{
    TestSupport::LogCapture log;
    int line = 0;
    bool loggedBeforeCatch = false;
    try {
        line = __LINE__ + 1;
        RTE_THROW(RTE::Exception, QStringLiteral("data is broken"));
    } catch (const RTE::Exception& e) {
        loggedBeforeCatch = log.contains("Exception", "data is broken");
        EXPECT_EQ(e.message(), QStringLiteral("data is broken"));
        EXPECT_STREQ(e.what(), "data is broken");
        EXPECT_EQ(e.file(), QStringLiteral("ExceptionTest.cpp"));
        EXPECT_EQ(e.line(), static_cast<unsigned>(line));
    }
    EXPECT_TRUE(loggedBeforeCatch);
    EXPECT_TRUE(log.contains("Exception", "ExceptionTest.cpp:" + std::to_string(line) + ": data is broken"));
}

TEST(ExceptionTest, DerivedFailuresAreCaughtAsTheirBases)
{
    TestSupport::LogCapture log;
    EXPECT_THROW(ThrowAndReturnLine(), RTE::VerificationFailed);
    EXPECT_THROW(RTE_THROW(RTE::FileWriteError, QStringLiteral("x")), RTE::FileError);
    EXPECT_THROW(RTE_THROW(RTE::FileError, QStringLiteral("x")), RTE::Exception);
    EXPECT_THROW(RTE_THROW(RTE::LogicError), std::exception);
    EXPECT_THROW(RTE_THROW(RTE::VerificationFailed), RTE::Exception);
    try {
        RTE_THROW(RTE::PreconditionFailed, QStringLiteral("Precondition failed: !str.empty()"));
    } catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), "Precondition failed: !str.empty()");
    }
}

TEST(ExceptionTest, ThrowMsgStreamsQtAndStandardTexts)
{
    TestSupport::LogCapture log;
    const std::string context = "Stream";
    const QString file = QStringLiteral("B00001.im7");
    try {
        RTE_THROW_MSG(RTE::Exception, "Invalid context '" << context << "' in " << file << " #" << 42);
        FAIL() << "no exception";
    } catch (const RTE::Exception& e) {
        EXPECT_EQ(e.message(), QStringLiteral("Invalid context 'Stream' in B00001.im7 #42"));
        EXPECT_EQ(e.file(), QStringLiteral("ExceptionTest.cpp"));
    }
    EXPECT_TRUE(log.contains("Exception", "Invalid context 'Stream' in B00001.im7 #42"));
}

TEST(ExceptionTest, NonAsciiTextSurvivesWhat)
{
    TestSupport::LogCapture log;
    try {
        RTE_THROW_MSG(RTE::Exception, QString::fromUtf8("Winkel 90\xC2\xB0" "CA"));
    } catch (const RTE::Exception& e) {
        EXPECT_EQ(std::string(e.what()), "Winkel 90\xC2\xB0" "CA");
        EXPECT_EQ(QString::fromUtf8(e.what()), e.message());
    }
}

TEST(ExceptionTest, VerifyThrowsOnlyWhenTheConditionFails)
{
    TestSupport::LogCapture log;
    EXPECT_NO_THROW(RTE_VERIFY(1 + 1 == 2, "arithmetic"));
    try {
        RTE_VERIFY(1 + 1 == 3, "Buffer must be valid");
        FAIL() << "no exception";
    } catch (const RTE::VerificationFailed& e) {
        EXPECT_EQ(e.message(), QStringLiteral("Buffer must be valid"));
    }
}

TEST(ExceptionTest, FileWriteErrorFromDeviceAppendsTheDeviceReason)
{
    TestSupport::TempDir dir;
    QFile file(QString::fromStdString(dir / "missing-folder/file.txt"));
    ASSERT_FALSE(file.open(QIODevice::WriteOnly));
    ASSERT_FALSE(file.errorString().isEmpty());
    const RTE::FileWriteError error(file, QStringLiteral("Cannot write settings"));
    EXPECT_EQ(error.message(), QStringLiteral("Cannot write settings: ") + file.errorString());
}
