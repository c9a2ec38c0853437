// The reader's end of a real pipe against a host that writes any bytes in any pieces.
//
// An input is a flag for logging and then what the host does:
//   |          the piece is written; the next one is written when this one has been read
//   P n TEXT   a packet of the next n - '0' bytes of the input
//   F a b c    a packet of 256 a + b bytes, up to the longest, all of them c
//   L a b      a length field of 256 a + b, up to a little more than a packet may have
//   else       that byte

#include "fuzz/support/Input.h"
#include "fuzz/support/Process.h"
#include "fuzz/support/Require.h"
#include "ipc/pipe/NamedPipe_win.h"
#include "platform/HostPipe.h"
#include "platform/Win32.h"

#include <QObject>

#include <deque>
#include <vector>

namespace {

constexpr std::size_t kMaxPayload = 4092;
constexpr std::size_t kLengthSize = 4;
/// Several times the reader's buffer, and fits the pipe, so that the host is never blocked.
constexpr std::size_t kMaxBytes = std::size_t{16} * 1024;

using Pieces = std::deque<std::string>;

std::string lengthField(std::size_t length)
{
    std::string bytes;
    for (std::size_t i = 0; i < kLengthSize; ++i)
        bytes += static_cast<char>(length >> (8 * i) & 0xFFU);
    return bytes;
}

std::string packet(const std::string& payload)
{
    return lengthField(payload.size()) + payload;
}

std::size_t number(Input& input, std::size_t limit)
{
    const int high = input.byte();
    return static_cast<std::size_t>(high << 8 | input.byte()) % limit;
}

std::string nextBytes(Input& input, char what)
{
    switch (what) {
    case 'P':
        return packet(input.bytes(static_cast<std::size_t>(input.byte() - '0') & 0x7FU));
    case 'F': {
        const std::size_t length = number(input, kMaxPayload + 1);
        return packet(std::string(length, static_cast<char>(input.byte())));
    }
    case 'L':
        return lengthField(number(input, kMaxPayload + 100));
    default:
        return {what};
    }
}

Pieces piecesOf(Input& input)
{
    Pieces pieces(1);
    for (std::size_t count = 0; !input.atEnd() && count < kMaxBytes;) {
        const char what = static_cast<char>(input.byte());
        if (what == '|') {
            pieces.emplace_back();
        } else {
            const std::string bytes = nextBytes(input, what);
            pieces.back() += bytes;
            count += bytes.size();
        }
    }
    // A read of nothing ends the reading.
    pieces.emplace_back();
    return pieces;
}

/// What has to come out, worked out on all of the bytes at once.
std::vector<QString> textsIn(const Pieces& pieces)
{
    std::string stream;
    for (const std::string& piece : pieces) {
        if (piece.empty())
            break;
        stream += piece;
    }
    std::vector<QString> texts;
    for (std::size_t at = 0; at + kLengthSize <= stream.size();) {
        std::size_t length = 0;
        for (std::size_t i = 0; i < kLengthSize; ++i)
            length |= std::size_t{static_cast<unsigned char>(stream[at + i])} << (8 * i);
        at += kLengthSize;
        if (length > kMaxPayload || at + length > stream.size())
            break;
        texts.push_back(QString::fromUtf8(stream.substr(at, length).c_str()));
        at += length;
    }
    return texts;
}

/// Both ends of the one pipe that all inputs go through.
struct Connection
{
    Connection()
    {
        require(host.isOpen(), "the host's end is open");
        QObject::connect(&reader, &NamedPipe::sigReadyRead,
                         [this](const QString& text) { texts.push_back(text); });
        QObject::connect(&reader, &NamedPipe::sigExitPipe, [this] { ++exits; });
    }

    pavo::HostPipe host{QStringLiteral("fuzz"), pavo::HostPipe::Direction::HostWrites};
    NamedPipe reader{NamedPipe::Reader};
    Pieces pieces;              ///< not written yet
    std::size_t unread = 0;     ///< bytes that were written and not read yet
    std::vector<QString> texts; ///< that came out
    int exits = 0;
};

Connection* connection = nullptr;

} // namespace

/// The reader's way to the pipe, on the fuzzer's one thread.
class NamedPipeProbe
{
public:
    static bool open(NamedPipe& pipe, const QString& name)
    {
        return pipe.initPipe(name, GENERIC_READ);
    }

    /// Reads until the host lets it end.
    static void read(NamedPipe& pipe)
    {
        pipe.m_buffered = 0;
        pipe.readPacket();
    }

    /// Takes what a reader has left that ended early.
    static void drain(NamedPipe& pipe, std::size_t count)
    {
        std::vector<char> rest(count);
        for (DWORD read = 0; count > 0; count -= read)
            require(ReadFile(pipe.m_handle.get(), rest.data(), static_cast<DWORD>(count), &read,
                             nullptr) != 0,
                    "what was written can be read");
    }
};

// Compiled into the reader in place of ReadFile.
BOOL readFileAfterHost(HANDLE handle, LPVOID buffer, DWORD size, LPDWORD read,
                       LPOVERLAPPED overlapped)
{
    if (connection->unread == 0) {
        require(!connection->pieces.empty(), "nothing is read after the end");
        const std::string piece = connection->pieces.front();
        connection->pieces.pop_front();
        require(connection->host.write(QByteArray::fromStdString(piece)), "the host can write");
        connection->unread = piece.size();
    }
    require(size > 0, "there is room to read into");
    const BOOL result = ReadFile(handle, buffer, size, read, overlapped);
    connection->unread -= *read;
    return result;
}

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    prepareProcess();
    connection = new Connection;
    require(NamedPipeProbe::open(connection->reader, connection->host.fullName()) &&
                connection->host.awaitClient(),
            "the reader is connected");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    setLogging((input.byte() & 1) != 0);
    connection->pieces = piecesOf(input);
    connection->texts.clear();
    connection->exits = 0;
    const std::vector<QString> expected = textsIn(connection->pieces);
    NamedPipeProbe::read(connection->reader);
    require(connection->texts == expected, "what comes out is what is in the bytes");
    require(connection->exits == 1, "the reading ends once");
    NamedPipeProbe::drain(connection->reader, connection->unread);
    connection->unread = 0;
    return 0;
}
