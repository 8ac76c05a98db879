// The data connection: who opens it, and what goes over it.
#include <algorithm>
#include <utility>

#include "diag/assert/require.h"
#include "net/dialogue.h"
#include "net/ftpports.h"
#include "net/hostaddresses.h"
#include "net/socketfailure.h"
#include "net/socketlines.h"
#include "net/socketwait.h"
#include "seam/osclock.h"
#include "tarnlib/csiftp.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/sfile.h"
#include "tarnlib/simplebuffer.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csiftp";
constexpr unsigned short kConnectionFailed = 41327;
constexpr unsigned short kDataCommandRefused = 41319;
/// Each send has a price of its own, under Wine three calls of its server: 1 MiB is sent a tenth faster than 256 KiB,
/// and 2 MiB more slowly again.
constexpr unsigned kBlockBytes = 1024 * 1024;

// The argument of EPRT for IPv6. The first is not RFC 2428's: servers that insist on that get the second.
constexpr const char* kExtendedPort = "|2|%s|%d";
constexpr const char* kExtendedPortWithBar = "|2|%s|%d|";

/// Connects a socket that does not block. False when it is refused or takes too long: the last socket error says why.
bool ConnectWithin(unsigned s, const sockaddr* address, unsigned seconds) {
    if (ossockets::Connect(s, address, CSISocket::getSize(address)) == 0) return true;
    if (!IsToBeAskedAgain(ossockets::LastError())) return false;
    fd_set connected;
    connected.fd_count = 1;
    connected.fd_array[0] = s;
    fd_set refused = connected;
    const timeval limit = {static_cast<long>(std::min<unsigned>(seconds, MAXLONG)), 0};
    const int ready = ossockets::Select(0, nullptr, &connected, &refused, &limit);
    if (ready == 0) WSASetLastError(WSAETIMEDOUT);
    if (ready > 0 && refused.fd_count == 1) WSASetLastError(ossockets::ErrorOf(s));
    return ready > 0 && refused.fd_count == 0;
}

/// Text as it is sent: every line ends with CR LF. Blocks may part them.
class TextLines {
  public:
    /// Room for twice as many bytes.
    unsigned convert(const char* text, unsigned count, char* out) {
        char* const begin = out;
        for (const char* const end = text + count; text != end; ++text) {
            if (*text == '\n' && !isAfterReturn_) *out++ = '\r';
            *out++ = *text;
            isAfterReturn_ = *text == '\r';
        }
        return static_cast<unsigned>(out - begin);
    }

  private:
    bool isAfterReturn_ = false;
};

char* RoomIn(SSimpleBuffer& buffer, unsigned bytes) {
    return reinterpret_cast<char*>(buffer.getBuffer(bytes));
}

/// The bytes of an address for PORT: "127,0,0,1,25,46".
SAnsiString PortArgument(const sockaddr_storage& address) {
    const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&v4.sin_addr);
    const auto* const port = reinterpret_cast<const unsigned char*>(&v4.sin_port);
    return STraceHelper("%d,%d,%d,%d,%d,%d", bytes[0], bytes[1], bytes[2], bytes[3], port[0], port[1]);
}

/// Takes the next connection if it is the server's, and closes any other. False when none can be taken.
bool AcceptFrom(const sockaddr_storage& server, unsigned listening, unsigned& data) {
    sockaddr_storage address = {};
    int size = sizeof address;
    ossockets::Socket accepted(CSISocket::accept(listening, Generic(address), &size));
    if (!accepted) return IsToBeAskedAgain(CSISocket::getLastError());
    if (!IsSameAddress(Generic(address), Generic(server))) {
        TARN_TRACE_AT(levels::kLoss, kUnit, "a data connection from %1, which is not the server's, is closed",
                      CSISocket::getipstring(Generic(address)));
        return true;
    }
    if (ossockets::SetNonBlocking(accepted.get()) != 0) return false;
    data = accepted.release();
    return true;
}

/// A zone has no meaning on another machine.
SAnsiString WithoutZone(const SAnsiString& address) {
    const SAnsiString::iterator zone = address.find('%');
    return zone.isAtEnd() ? address : SAnsiString(address.left(zone));
}

}  // namespace

/// The end of a time in whole seconds.
class CSIftp::Deadline {
  public:
    explicit Deadline(unsigned seconds) : end_(osclock::Tick() + seconds * kMilliseconds) {}
    bool isOver() const { return osclock::Tick() >= end_; }
    /// Rounded up.
    unsigned secondsLeft() const {
        const unsigned long long now = osclock::Tick();
        return now < end_ ? static_cast<unsigned>((end_ - now + kMilliseconds - 1) / kMilliseconds) : 0;
    }

  private:
    static constexpr unsigned long long kMilliseconds = 1000;
    unsigned long long end_;
};

/// The data connection cannot be had without this.
void CSIftp::requireStep(bool isDone, const char* detail) {
    if (isDone) return;
    CloseDataConnection();
    fail(CSIftpException::dataConnectionError, kConnectionFailed, detail);
}

int CSIftp::controlFamily() {
    sockaddr_storage own = {};
    int size = sizeof own;
    requireStep(CSISocket::getsockname(control_, Generic(own), &size) == 0,
                "Failed to get the name for control connection socket");
    return own.ss_family;
}

// ----------------------------------------------------------------------------------------- the server opens it

bool CSIftp::InitializeListenSocket(int family) {
    sockaddr_storage address = {};
    int size = sizeof address;
    listening_ = CSISocket::socket(family, SOCK_STREAM, 0);
    requireStep(listening_ != CSISocket::kInvalid && ossockets::SetNonBlocking(listening_) == 0,
                "Failed to create a listening socket:");
    requireStep(CSISocket::getsockname(control_, Generic(address), &size) == 0,
                "Failed to get the name for control connection socket");
    CSISocket::setPort(Generic(address), 0);
    requireStep(CSISocket::bind(listening_, Generic(address), size) == 0,
                "Failed to bind the listening socket");
    requireStep(CSISocket::getsockname(listening_, Generic(address), &size) == 0,
                "Failed to get the listening socket name");
    requireStep(CSISocket::listen(listening_, 1) == 0,
                "Failed while listening for an incoming data connection");
    offerPort(address);
    return true;
}

/// Tells the server where to connect to.
void CSIftp::offerPort(const sockaddr_storage& address) {
    constexpr int kOkay = 200;
    constexpr int kNoSuchCommand = 500;
    constexpr int kBadArgument = 501;
    const bool isV4 = address.ss_family == AF_INET;
    const SAnsiString text = isV4 ? SAnsiString() : WithoutZone(CSISocket::getipstring(Generic(address)));
    const auto argument = [&](const char* format) {
        return isV4 ? PortArgument(address)
                    : STraceHelper(format, text, CSISocket::getPort(Generic(address)));
    };
    const char* const word = isV4 ? CTRL_FTP_PORT : CTRL_FTP_EPRT;
    SAnsiString offer = argument(wantsLastBar_ ? kExtendedPortWithBar : kExtendedPort);
    SAnsiString reply;
    int code = command(word, &offer, reply);
    if (!isV4 && !wantsLastBar_ && (code == kNoSuchCommand || code == kBadArgument)) {
        wantsLastBar_ = true;
        offer = argument(kExtendedPortWithBar);
        code = command(word, &offer, reply);
    }
    if (code != kOkay) fail(CSIftpException::dataCommandRefused, kDataCommandRefused, reply);
}

/// Waits until a socket of the data connection can be read or written. False when that takes too long, or when the server says
/// meanwhile what becomes of the file, which is to be read then; the last socket error tells them apart.
bool CSIftp::awaitData(unsigned socket, bool isToSend, const Deadline& deadline) {
    constexpr char kMoreToCome = '1';
    const Direction direction = isToSend ? Direction::Write : Direction::Read;
    while (connected_) {
        const bool hasWord = lines_->hasUnread();
        const int ready = WaitForSocket(direction, socket, hasWord ? 0 : deadline.secondsLeft(), control_);
        if (ready < 0) return false;
        if ((ready & kReady) != 0) return true;
        if (ready == 0 && !hasWord) {
            WSASetLastError(WSAETIMEDOUT);
            return false;
        }
        if (lines_->peek() != kMoreToCome) break;
        SAnsiString reply;
        GetReply(reply);
        if (!deadline.isOver()) continue;  // announcements without end are no reason to wait any longer
        WSASetLastError(WSAETIMEDOUT);
        return false;
    }
    WSASetLastError(WSAECONNABORTED);
    return false;
}

int CSIftp::AcceptConnection() {
    const Deadline deadline(timeout_);
    sockaddr_storage server = {};
    int size = sizeof server;
    bool goesOn = ossockets::PeerName(control_, Generic(server), &size) == 0;
    while (goesOn && data_ == CSISocket::kInvalid) {
        goesOn = awaitData(listening_, false, deadline) && AcceptFrom(server, listening_, data_) &&
                 !deadline.isOver();
    }
    const ossockets::Socket listening(std::exchange(listening_, CSISocket::kInvalid));
    const bool isOpen = data_ != CSISocket::kInvalid;
    requireStep(isOpen || lines_->hasUnread(), "Failed to accept a data connection from the ftp server");
    return isOpen ? static_cast<int>(data_) : 0;
}

// ----------------------------------------------------------------------------------------- this end opens it

/// Asks the server for a port that it listens on.
unsigned short CSIftp::askForPort(int family) {
    constexpr int kExtendedPassive = 229;
    constexpr int kPassive = 227;
    SAnsiString reply;
    unsigned short port = 0;
    if (command(CTRL_FTP_EPSV, nullptr, reply) == kExtendedPassive) {
        port = PortOfEpsv(reply);
    } else if (family == AF_INET && command(CTRL_FTP_PASV, nullptr, reply) == kPassive) {
        port = PortOfPasv(reply);
    }
    if (port == 0) fail(CSIftpException::dataCommandRefused, kDataCommandRefused, reply);
    return port;
}

void CSIftp::openPassively() {
    sockaddr_storage server = {};
    int size = sizeof server;
    const unsigned short port = askForPort(controlFamily());
    requireStep(ossockets::PeerName(control_, Generic(server), &size) == 0,
                "Failed to get the name for control connection socket");
    CSISocket::setPort(Generic(server), port);
    ossockets::Socket socket(CSISocket::socket(server.ss_family, SOCK_STREAM, 0));
    const bool isOpen = socket && ossockets::SetNonBlocking(socket.get()) == 0 &&
                        ConnectWithin(socket.get(), Generic(server), timeout_);
    if (!isOpen) {
        TraceSocketFailure(kUnit, "no data connection to port %1 of the server: %2", port,
                           CSISocket::getLastErrorStr());
    }
    requireStep(isOpen, "Failed to open a data connection to the ftp server");
    data_ = socket.release();
}

// ----------------------------------------------------------------------------------------- what goes over it

int CSIftp::SendDataMsg(const char* data, unsigned count) {
    const auto isWriteable = [this] { return awaitData(data_, true, Deadline(timeout_)); };
    if (SendAll(data_, data, count, isWriteable)) return static_cast<int>(count);
    TraceSocketFailure(kUnit, "Socket error %1", CSISocket::getLastErrorStr());
    return -1;
}

void CSIftp::CloseDataConnection() {
    const ossockets::Socket data(std::exchange(data_, CSISocket::kInvalid));
    const ossockets::Socket listening(std::exchange(listening_, CSISocket::kInvalid));
}

/// By a reset: an orderly end would make a part of a file a whole one.
void CSIftp::breakDataConnection() {
    const linger atOnce = {1, 0};
    if (data_ != CSISocket::kInvalid) ossockets::SetOption(data_, SO_LINGER, &atOnce, sizeof atOnce);
    CloseDataConnection();
}

/// Sends the file in blocks; false, and traced, when that breaks off.
bool CSIftp::sendFile(SFile& file, const SAnsiString& remote) try {
    SSimpleBuffer block, text;
    char* const room = RoomIn(block, kBlockBytes);
    char* const converted = type_ == ascii ? RoomIn(text, 2 * kBlockBytes) : nullptr;
    TextLines lines;
    long long sent = 0;
    for (;;) {
        const int read = file.read(room, kBlockBytes);
        if (read <= 0) break;
        const char* bytes = room;
        auto count = static_cast<unsigned>(read);
        if (converted != nullptr) {
            count = lines.convert(bytes, count, converted);
            bytes = converted;
        }
        if (SendDataMsg(bytes, count) < 0) return false;
        sent += count;
    }
    TARN_TRACE_AT(levels::kStep, kUnit, "%s: transfered %ld bytes", remote, sent);
    return true;
} catch (const SFileException& failure) {
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1 is not sent to its end: %2", remote, failure.toString());
    return false;
}

/// False when the server says that it does not come: that is to be read then.
bool CSIftp::isOpened() {
    if (isPassive_) return true;
    const int data = AcceptConnection();
    return (data != 0 || !lines_->hasUnread()) && Require(data > 0, kUnit, "AcceptConnection() > 0");
}

/// Everything over the data connection, and closes it.
bool CSIftp::transfer(SFile& file, const SAnsiString& remote) {
    const bool isSent = isOpened() && sendFile(file, remote);
    if (isSent) {
        CloseDataConnection();
    } else {
        breakDataConnection();
    }
    return isSent;
}

/// The one that is no announcement of others.
int CSIftp::lastReply(SAnsiString& reply) {
    constexpr int kMostAnnouncements = 100;
    constexpr int kLeastOfLast = 200;
    int code = GetReply(reply);
    for (int more = kMostAnnouncements; more != 0 && code != 0 && code < kLeastOfLast; --more)
        code = GetReply(reply);
    return code;
}

/// From the data connection on, which may be open when this says no.
bool CSIftp::put(SFile& file, const SAnsiString& remote) try {
    constexpr int kAlreadyOpen = 125;
    constexpr int kAboutToOpen = 150;
    constexpr int kStored = 226;
    constexpr int kDone = 250;
    SAnsiString reply;
    const int code = command(CTRL_FTP_PUT, &remote, reply);
    if (code != kAlreadyOpen && code != kAboutToOpen) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "%1 is refused: %2", remote, reply);
        return false;
    }
    const bool isSent = transfer(file, remote);
    const int last = lastReply(reply);
    if (isSent && (last == kStored || last == kDone)) return true;
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1 is not stored: %2", remote, reply);
    return false;
} catch (...) {
    dropReply();
    throw;
}

void CSIftp::dropReply() noexcept {
    closeControl();  // the server's word about the file would be taken for the next reply
}

bool CSIftp::PutFile(const SAnsiString& local, const SAnsiString& remote) {
    if (!dialogue::IsOneLine(remote, kUnit)) return false;
    SFile file;
    try {
        file.open(localPath(local), SFile::readOnly | SFile::sequential, SFile::readWriteMask,
                  SFile::denyNothing);
    } catch (const SFileException& failure) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "%1 is not sent: %2", local, failure.toString());
        return false;
    }
    if (!connected_) failToSend(CTRL_FTP_PUT, "no connection");
    try {
        if (isPassive_) {
            openPassively();
        } else if (!InitializeListenSocket(controlFamily())) {
            return false;
        }
        const bool isStored = put(file, remote);
        CloseDataConnection();
        return isStored;
    } catch (...) {
        breakDataConnection();
        throw;
    }
}

}  // namespace TarnLibA500
