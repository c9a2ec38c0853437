#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

/// A part of a page, from its heading to the next one of whatever level.
class Section
{
public:
    Section(int headingLevel, QString heading)
        : level(headingLevel)
        , title(std::move(heading))
    {
    }

    /// The fenced blocks of that language, in order.
    std::vector<QString> blocks(const QString& language) const;
    /// The rows of its tables, heads and rules left out, as trimmed cells.
    std::vector<QStringList> rows() const;

    int level;
    QString title;
    QStringList lines;
};

/// A page of docs/, as its reader sees it. One that cannot be read has no sections.
class Page
{
public:
    explicit Page(const QString& fileName);

    const std::vector<Section>& sections() const { return m_sections; }
    /// The section of that title; an empty one if there is none.
    Section section(const QString& title) const;
    /// The sections below the one of that title, one level down.
    std::vector<Section> sectionsUnder(const QString& title) const;

private:
    std::vector<Section> m_sections;
};

/// A file of the tree.
QString sourceFile(const QString& path);
QString readSource(const QString& path);

/// What stands between backticks.
QStringList codeSpans(const QString& text);

/// The bytes as lines of an offset, sixteen numbers and their characters.
QString hexDump(const QByteArray& bytes, int firstOffset = 0);
/// The bytes of such lines.
QByteArray bytesOfDump(const QString& dump);
