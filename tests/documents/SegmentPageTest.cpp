#include "ipc/MultiAccount/MACodes.h"
#include "pavo_base/JSONUtils.h"
#include "platform/SegmentGatePassage.h"
#include "tests/documents/Page.h"
#include "tests/support/AccountsFixture.h"

#include <QFileInfo>

// docs/segment.md has the names of the segment and all that belongs to it, and its bytes as two
// workbenches write them.

namespace {

const Page& page()
{
    static const Page page(QStringLiteral("segment.md"));
    return page;
}

class SegmentPageTest : public AccountsFixture
{
protected:
    /// The page's dump of a region, its keys, and that the rest of the region is zero.
    void expectRegion(const char* title, const MARegion& region)
    {
        const std::string text = bytes(region.offset, region.size).c_str();
        const int shown = (static_cast<int>(text.size()) / 16 + 1) * 16;
        const QString dump =
            hexDump(QByteArray::fromStdString(bytes(region.offset, shown)), region.offset);
        const Section section = page().section(QLatin1String(title));
        const auto blocks = section.blocks(QStringLiteral("text"));
        ASSERT_EQ(blocks.size(), 1U);
        EXPECT_EQ(blocks.front().toStdString(), dump.toStdString());
        const int rest = region.size - shown;
        EXPECT_EQ(bytes(region.offset + shown, rest),
                  std::string(static_cast<std::size_t>(rest), '\0'));

        QStringList keys;
        for (const QStringList& row : section.rows())
            keys << codeSpans(row[0]);
        keys.sort();
        Json::Value document;
        ASSERT_TRUE(JSONUtils::parseJSON(text, document));
        QStringList written;
        for (const std::string& key :
             (document.isArray() ? document[0] : document).getMemberNames())
            written << QString::fromStdString(key);
        EXPECT_EQ(keys, written);
    }
};

} // namespace

TEST_F(SegmentPageTest, HasTheNames)
{
    const QString application = QStringLiteral("Workbench");
    const QString key = application + QLatin1String(kMASegmentSuffix);
    const QString segment = QFileInfo(QSharedMemory(key).nativeKey()).fileName();
    const QStringList expected{key, segment, pavo::segmentLockName(segment),
                               pavo::segmentGateName(segment)};
    QStringList names;
    for (const QStringList& row : page().section(QStringLiteral("Names")).rows())
        names << codeSpans(row[1]);
    EXPECT_EQ(names.join(QLatin1Char(' ')).toStdString(),
              expected.join(QLatin1Char(' ')).toStdString());
}

TEST_F(SegmentPageTest, HasTheBytesThatTwoWorkbenchesWrite)
{
    MAManagerProbe waiter;
    MAManagerProbe cashier;
    ASSERT_TRUE(
        waiter.initManager("im.waiter", "waiter", "WorkbenchWindow", "Workbench - waiter", 4));
    waiter.windowStateChanged(kMANormal, QRect(100, 80, 860, 560));
    ASSERT_TRUE(
        cashier.initManager("im.waiter", "cashier", "WorkbenchWindow", "Workbench - 小红", 0));
    cashier.changeLoginState(1);
    cashier.changeCurrentUnread(3);

    expectRegion("The account in front", kMASelectedRegion);
    expectRegion("The list", kMAListRegion);
    const int spare = kMASegmentSize - kMAListRegion.offset - kMAListRegion.size;
    EXPECT_EQ(bytes(kMAListRegion.offset + kMAListRegion.size, spare),
              std::string(static_cast<std::size_t>(spare), '\0'));

    std::vector<QStringList> regions;
    for (const QStringList& row : page().section(QStringLiteral("Bytes")).rows())
        regions.push_back(row.mid(0, 2));
    const auto span = [](int from, int size) {
        return QStringList{QString::number(from), QString::number(size)};
    };
    EXPECT_EQ(regions,
              (std::vector<QStringList>{span(kMASelectedRegion.offset, kMASelectedRegion.size),
                                        span(kMAListRegion.offset, kMAListRegion.size),
                                        span(kMAListRegion.offset + kMAListRegion.size, spare)}));
}
