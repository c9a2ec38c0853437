#include "tools/pavo-host/LineEditor.h"

#include "tools/pavo-host/LineHistory.h"
#include "tools/pavo-host/TerminalMode.h"
#include "tools/support/StandardInput.h"
#include "tools/support/Terminal.h"

#include <QSocketNotifier>

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <utility>

namespace {

/// How long the rest of a key's bytes may take.
constexpr int kKeyMs = 100;

constexpr wchar_t kEndOfInput = 4;

/// Reads a byte unless none comes.
ssize_t readByte(char& byte)
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, kKeyMs) != 1)
        return -1;
    return read(STDIN_FILENO, &byte, 1);
}

/// What all the words start with.
QString commonStart(const QStringList& words)
{
    QString start = words.first();
    for (const QString& word : words) {
        while (!word.startsWith(start))
            start.chop(1);
    }
    return start;
}

/// Over the editing library, which is given a key whenever one is there and never waits for one.
class KeyEditor final : public LineEditor
{
public:
    KeyEditor(const char* prompt, Complete complete)
        : m_prompt(prompt)
        , m_complete(std::move(complete))
        , m_editor(el_init("pavo-host", stdin, stdout, stderr))
        , m_keys(STDIN_FILENO, QSocketNotifier::Read)
    {
        el_set(m_editor, EL_CLIENTDATA, this);
        el_set(m_editor, EL_PROMPT, &KeyEditor::promptOf);
        el_set(m_editor, EL_GETCFN, &KeyEditor::nextCharacter);
        el_set(m_editor, EL_EDITOR, "emacs");
        // The narrow call would copy both texts and leave the copies behind.
        el_wset(m_editor, EL_ADDFN, L"complete", L"complete the first word",
                &KeyEditor::completeWord);
        el_set(m_editor, EL_BIND, "\t", "complete", nullptr);
        el_set(m_editor, EL_BIND, "^R", "ed-search-prev-history", nullptr);
        m_history.serve(m_editor);
        // What somebody has bound otherwise is bound so here, too.
        el_source(m_editor, nullptr);
        m_keys.setEnabled(false);
        connect(&m_keys, &QSocketNotifier::activated, this, &KeyEditor::takeKey);
    }

    ~KeyEditor() override
    {
        hide();
        stop();
        el_end(m_editor);
    }

    void start() override
    {
        m_isActive = true;
        el_set(m_editor, EL_UNBUFFERED, 1);
        m_keys.setEnabled(true);
    }

    void hide() override
    {
        if (!m_isActive)
            return;
        // The cursor may be in a further row of a long line, and the terminal's width new.
        el_resize(m_editor);
        int columns = 0;
        el_get(m_editor, EL_GETTC, "co", &columns);
        const LineInfoW* const line = el_wline(m_editor);
        int width = static_cast<int>(std::char_traits<char>::length(m_prompt));
        for (const wchar_t* c = line->buffer; c != line->cursor; ++c)
            width += std::max(wcwidth(*c), 0);
        if (columns > 0 && width >= columns)
            std::fprintf(stdout, "\x1b[%dA", width / columns);
        std::fputs("\r\x1b[J", stdout);
    }

    void show() override
    {
        if (m_isActive)
            el_set(m_editor, EL_REFRESH);
    }

private:
    static KeyEditor& of(EditLine* editor)
    {
        void* self = nullptr;
        el_get(editor, EL_CLIENTDATA, &self);
        return *static_cast<KeyEditor*>(self);
    }

    static char* promptOf(EditLine* editor) { return const_cast<char*>(of(editor).m_prompt); }

    /// 1: there is one. 0: there is none.
    static int nextCharacter(EditLine* editor, wchar_t* character)
    {
        std::mbstate_t state{};
        char byte = 0;
        for (;;) {
            const ssize_t count = readByte(byte);
            if (count == 0)
                of(editor).m_hasEnded = true;
            if (count != 1)
                return 0;
            const std::size_t taken = std::mbrtowc(character, &byte, 1, &state);
            if (taken != static_cast<std::size_t>(-2))
                return taken == static_cast<std::size_t>(-1) ? 0 : 1;
        }
    }

    static unsigned char completeWord(EditLine* editor, int /*key*/)
    {
        const LineInfoW* const line = el_wline(editor);
        const QString typed =
            QString::fromWCharArray(line->buffer, static_cast<int>(line->cursor - line->buffer));
        const QStringList words = of(editor).m_complete(typed);
        if (words.isEmpty())
            return CC_ERROR;
        const QString start = commonStart(words);
        if (words.size() > 1 && start.size() <= typed.size()) {
            Q_EMIT of(editor).offers(words);
            return CC_NORM;
        }
        el_deletestr(editor, typed.size());
        const QString word = words.size() == 1 ? start + QLatin1Char(' ') : start;
        return el_insertstr(editor, word.toUtf8().constData()) == 0 ? CC_REFRESH : CC_ERROR;
    }

    void takeKey()
    {
        int count = 0;
        const wchar_t* const line = el_wgets(m_editor, &count);
        const wchar_t last = line && count > 0 ? line[count - 1] : L'\0';
        if (m_hasEnded || last == kEndOfInput) {
            hide();
            stop();
            Q_EMIT ended();
        } else if (last == L'\n') {
            const QString text = QString::fromWCharArray(line, count - 1);
            stop();
            if (!text.trimmed().isEmpty() && !text.startsWith(QLatin1Char(' ')))
                m_history.add(text);
            Q_EMIT entered(text);
            start();
        }
    }

    void stop()
    {
        m_keys.setEnabled(false);
        m_isActive = false;
        el_set(m_editor, EL_UNBUFFERED, 0);
    }

    const TerminalMode m_mode;
    const char* const m_prompt;
    const Complete m_complete;
    LineHistory m_history;
    EditLine* const m_editor;
    QSocketNotifier m_keys;
    bool m_isActive = false;
    bool m_hasEnded = false;
};

} // namespace

std::unique_ptr<LineEditor> LineEditor::make(const char* prompt, Complete complete)
{
    if (!StandardInput::isTerminal() || !Terminal().showsColours())
        return nullptr;
    return std::make_unique<KeyEditor>(prompt, std::move(complete));
}
