#include <StreamIO/ReaderConfiguration.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

using SetApi::C_ContentPurpose;
using SetApi::Private::C_ReaderConfiguration;
using SetApi::Private::C_ReaderInfo;

namespace {

C_ReaderInfo Entry(const QString& prefix, unsigned frame)
{
    return C_ReaderInfo("Name" + prefix, "Type" + prefix, prefix, "Format " + prefix,
                        C_ContentPurpose::CreateFrameLink(frame));
}

} // namespace

TEST(ReaderConfigurationTest, ListKeepsOrderAndRemovesByIndex)
{
    C_ReaderConfiguration configuration;
    configuration.AddReader(Entry("A", 0));
    configuration.AddReader(Entry("B", 1));
    configuration.AddReader(Entry("C", 2));
    ASSERT_EQ(3u, configuration.GetReaderCount());
    EXPECT_EQ(QString("B"), configuration.GetReader(1).FilePrefix);
    EXPECT_NE(Entry("A", 0), Entry("A", 1));

    configuration.RemoveReader(1);
    ASSERT_EQ(2u, configuration.GetReaderCount());
    EXPECT_EQ(Entry("A", 0), configuration.GetReader(0));
    EXPECT_EQ(Entry("C", 2), configuration.GetReader(1));

    EXPECT_THROW(configuration.GetReader(2), RTE::VerificationFailed);
    EXPECT_THROW(configuration.RemoveReader(2), RTE::VerificationFailed);
    EXPECT_THROW(C_ReaderConfiguration().GetReader(0), RTE::VerificationFailed);
    EXPECT_EQ(2u, configuration.GetReaderCount());
}

TEST(ReaderConfigurationTest, RepairFlagAndCopiesAreIndependent)
{
    C_ReaderConfiguration configuration;
    EXPECT_FALSE(configuration.HasBeenRepaired());
    configuration.AddReader(Entry("A", 0));
    C_ReaderConfiguration copy = configuration;

    // An empty text marks the configuration repaired all the same.
    configuration.MarkAsRepaired("");
    EXPECT_TRUE(configuration.HasBeenRepaired());
    EXPECT_TRUE(configuration.GetDetailsOfRepair().isEmpty());
    configuration.MarkAsRepaired("dropped Frame1");
    EXPECT_EQ(QString("dropped Frame1"), configuration.GetDetailsOfRepair());
    configuration.RemoveReader(0);

    EXPECT_FALSE(copy.HasBeenRepaired());
    EXPECT_EQ(1u, copy.GetReaderCount());
    copy = configuration;
    EXPECT_TRUE(copy.HasBeenRepaired());
    EXPECT_EQ(0u, copy.GetReaderCount());
}
