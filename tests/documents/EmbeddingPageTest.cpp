#include "tests/documents/Page.h"

#include <gtest/gtest.h>

// Whatever docs/embedding.md shows of the example stands in it, but for blanks.

TEST(EmbeddingPageTest, ShowsWhatTheExampleHas)
{
    const struct
    {
        const char* language;
        const char* file;
    } sources[] = {{"cpp", "main.cpp"}, {"cmake", "CMakeLists.txt"}};
    const Page page(QStringLiteral("embedding.md"));
    for (const auto& [language, file] : sources) {
        const QString source =
            readSource(QStringLiteral("examples/workbench/") + QLatin1String(file)).simplified();
        int shown = 0;
        for (const Section& section : page.sections()) {
            for (const QString& block : section.blocks(QLatin1String(language))) {
                EXPECT_TRUE(source.contains(block.simplified())) << qPrintable(block);
                ++shown;
            }
        }
        EXPECT_GT(shown, 0) << language;
    }
}
