#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

/// Lines typed at a terminal, with editing, completion, and a history that is kept from run to run
/// in a file that only its owner may read. A line that starts with a blank is not kept.
class LineEditor : public QObject
{
    Q_OBJECT

public:
    /// The words that a line may start with, given how its first one starts.
    using Complete = std::function<QStringList(const QString& word)>;

    /// Null unless standard input and output are a terminal that understands control sequences, and
    /// where the system's terminals edit lines themselves.
    static std::unique_ptr<LineEditor> make(const char* prompt, Complete complete);

    virtual void start() = 0;
    /// Takes the line off the screen, for something else to be printed, and brings it back.
    virtual void hide() = 0;
    virtual void show() = 0;

Q_SIGNALS:
    void entered(QString line);
    /// These can be chosen from.
    void offers(QStringList words);
    void ended();
};
