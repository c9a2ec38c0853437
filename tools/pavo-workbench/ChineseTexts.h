#pragma once

#include <QTranslator>

/// The window's texts in Chinese.
class ChineseTexts : public QTranslator
{
    Q_OBJECT

public:
    using QTranslator::QTranslator;

    QString translate(const char* context, const char* source, const char* disambiguation,
                      int number) const override;
    [[nodiscard]] bool isEmpty() const override { return false; }
};
