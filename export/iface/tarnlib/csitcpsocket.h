#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// A TCP connection to one port of one host, with a buffer for what is received, lines, and a time-out for every
/// wait.
///
/// A call that fails in reading or sending closes the connection, which TcpOpen may open again; every failure is
/// traced under "csitcpsocket". Times are in seconds, and are for each wait within a call. Connecting takes as
/// long as the system lets it. One thread at a time uses an object.
///
///     CSITcpSocket mail("mail.example.com", 25);
///     char line[CSITcpSocket::kLineBytes];
///     if (!mail.TcpOpen() || !mail.GetLine(line, 60)) return false;
///     return mail.SendString("QUIT\r\n", 60);
///
/// A subclass puts a secure channel in between: it overrides TcpOpen, send, recv and shutdown, through which
/// everything goes. It must call AbortSocket in its own destructor: in that of this class its functions are gone.
namespace TarnLibA500 {

/// A TCP client connection.
class TARN_API CSITcpSocket {
  public:
    /// What GetLine needs, the terminator included.
    static constexpr unsigned kLineBytes = 2048;

    /// Opens nothing yet.
    CSITcpSocket(const SAnsiString& host, unsigned short port);
    /// Takes host and port, not the connection.
    CSITcpSocket(const CSITcpSocket& other);
    /// Closes the connection and takes host and port.
    CSITcpSocket& operator=(const CSITcpSocket& other);
    /// Closes the connection as AbortSocket does.
    virtual ~CSITcpSocket();

    /// Connects to the first of the host's addresses that takes it; a connection that is open is closed first.
    /// False when none does.
    virtual bool TcpOpen();

    // What else a secure channel replaces; -1 for a failure, see CSISocket::getLastError.
    /// Sends bytes; returns how many were taken.
    virtual int send(const char* bytes, unsigned count, int flags);
    /// Receives bytes; returns how many came, 0 at the end. WSAETIMEDOUT means that nothing came in time.
    virtual int recv(char* bytes, unsigned count, int flags);
    /// Ends receiving (0), sending (1) or both (2).
    virtual int shutdown(unsigned s, int how);

    /// Looks the service's port up, keeps it, and connects; false when the system does not know the service.
    bool TcpOpen(const SAnsiString& service);
    /// Sends all of the bytes. False when there is no connection; otherwise true at once for none.
    bool Send(const void* bytes, unsigned length, unsigned seconds);
    /// Sends a text without its terminator.
    bool SendString(const SAnsiString& text, unsigned seconds);
    /// Makes sure that received bytes are in the buffer: true at once when there are some. After the time false,
    /// and the connection stays unless it is to be aborted; closed when the peer has ended, or for an error.
    bool GetData(unsigned seconds, bool abortOnTimeout);
    /// Receives exactly that many bytes.
    bool GetBuffer(unsigned length, void* destination, unsigned seconds);
    /// Receives a line that ends with CR and LF, neither of which is stored; alone they are data. The destination
    /// has room for kLineBytes, and is terminated; empty with a failure. A line that does not fit closes the
    /// connection, and so does one that is not whole after about ten times the time, however it trickles in.
    bool GetLine(char* destination, unsigned seconds);
    /// Tells the peer that nothing more comes, reads off what he still sends, for 10 s and 1 MiB at most (2 s
    /// without a byte), and closes. Nothing happens when there is no connection.
    void AbortSocket();

    /// The host, as it was given.
    const SAnsiString& GetHost() const noexcept { return host_; }
    /// The port, in host order.
    unsigned short GetPort() const noexcept { return port_; }
    /// Sets the port for the next TcpOpen.
    void SetPortA(unsigned short port) noexcept { port_ = port; }
    /// True while there is a connection, as far as this end knows.
    bool IsOpen() const noexcept;

  protected:
    /// True when recv has something at once although the socket is not readable: what a secure channel has
    /// decrypted already. False here.
    virtual bool hasPending();
    /// What a secure channel gives back before the handle is closed. Nothing here.
    virtual void closing() noexcept;
    /// Closes this connection and takes that of another socket, with the received bytes that nobody has read. The
    /// other is closed then; hosts and ports stay.
    void takeConnection(CSITcpSocket& other);

    SAnsiString host_;           ///< as it was given
    unsigned short port_;        ///< in host order
    unsigned socket_;            ///< CSISocket::kInvalid when closed
    unsigned unread_ = 0;        ///< received bytes that nobody has read
    unsigned readPosition_ = 0;  ///< where they begin in the buffer
    char* buffer_ = nullptr;     ///< 8,192 bytes, from the first opening until the connection is aborted
    unsigned receiveMilliseconds_ =
        0;  ///< how long GetData waits, for a recv that has to wait for more; 0 before

  private:
    void closeSocket() noexcept;
    bool aborted(const char* what);
    bool receive();
    void drain();

    unsigned sendSeconds_ = 0;  ///< the time-out of sending that the socket has
};

}  // namespace TarnLibA500
