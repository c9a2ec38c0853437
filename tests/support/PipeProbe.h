#pragma once

#include "ipc/pipe/NamedPipe_win.h"
#include "tests/support/Collector.h"

#include <QString>
#include <QThread>

/// What a NamedPipe keeps to itself.
class NamedPipeProbe
{
public:
    /// Whether it has found its pipe taken and is about to wait, or waits, for its turn.
    static bool waitsUntilFree(const NamedPipe& pipe)
    {
        return pipe.m_call == NamedPipe::Call::WaitUntilFree;
    }
};

/// A NamedPipe whose signals are collected on the thread that emits them.
class PipeProbe
{
public:
    explicit PipeProbe(NamedPipe::PipeRole role)
        : pipe(role)
    {
        QObject::connect(&pipe, &NamedPipe::sigReadyRead, [this](const QString& text) {
            m_emitter = QThread::currentThread();
            texts.add(text);
        });
        QObject::connect(&pipe, &NamedPipe::sigExitPipe, [this] { exits.add(true); });
    }

    const QThread* emitter() const { return m_emitter; }

    Collector<QString> texts;
    Collector<bool> exits;

private:
    const QThread* m_emitter = nullptr;

public:
    NamedPipe pipe; ///< Last, so that its thread ends before what it fills goes.
};
