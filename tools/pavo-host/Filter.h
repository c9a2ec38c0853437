#pragma once

#include "tools/pavo-host/Event.h"

#include <QRegularExpression>

#include <bitset>
#include <optional>

/// What the time line shows. Nothing else depends on it.
class Filter
{
public:
    /// One bit for each Event::Kind.
    using Kinds = std::bitset<Event::Text + 1>;

    /// Of names separated by commas, which are all if there are none; or nothing and what is wrong.
    static std::optional<Kinds> parseKinds(const QString& list, QString& problem);

    /// Shows these kinds; problems and asked-for texts are always shown.
    void setKinds(Kinds kinds) { m_kinds = kinds; }
    /// Of the messages, shows those with these names, separated by commas, where "*" stands for
    /// any text. Without names it shows them all.
    void setNames(const QString& list);

    bool shows(const Event& event) const;

private:
    Kinds m_kinds = Kinds().set();
    std::optional<QRegularExpression> m_names;
};
