#pragma once

#include <list>

#include "tarnlib/siarray.h"
#include "tarnlib/siset.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

// The system's own types, from winsock2.h and ws2tcpip.h.
struct sockaddr;
struct sockaddr_storage;
struct fd_set;
struct timeval;

/// The system's sockets: start-up, names and addresses, connecting, and waiting with a time-out.
///
/// All operations are static, keep no state and may be called from any thread. Nothing throws but "bad allocation":
/// a failure is -1, false or an error number, as each member says, and is traced under "csisocket" before it is
/// returned. initialize must have run once before anything else. Ports are in host order, IPv4 numbers in network
/// order, times in seconds unless a member says otherwise; host names are texts of the code page.
///
/// A name is not tried in the resolver's order: first the first IPv4 address, then the first IPv6 address, then
/// the other IPv4 and the other IPv6 ones. Loopback addresses are left out, deliberately, unless there is nothing
/// else. A pair of brackets around a host is taken off.
///
///     CSISocket::initialize();
///     unsigned s = CSISocket::kInvalid;
///     const int error = CSISocket::connectMulti("files.example.com", 21, s);
///     if (error != 0) return Complain(error);
///     if (CSISocket::isReadable(s, 30) == 1) received = CSISocket::recv(s, buffer, sizeof buffer, 0);
///     CSISocket::close(s);
namespace TarnLibA500 {

/// Static operations over the system's sockets.
class TARN_API CSISocket {
  public:
    /// No socket: all bits set.
    static constexpr unsigned kInvalid = 0xFFFFFFFF;
    /// The family of IPv4 addresses, which have 16 bytes.
    static constexpr int kIPv4 = 2;
    /// The family of IPv6 addresses, which have 28 bytes.
    static constexpr int kIPv6 = 23;
    /// As a retry limit of connectNonBlocking: for ever.
    static constexpr unsigned short kForever = 65535;

    /// What splitNamePortDetailed found.
    enum _splitNamePort_RC {
        splitOk = 0,              ///< a name and a port
        splitEmpty = 1,           ///< there is no text
        splitNoPort = 2,          ///< a name, and no port
        splitEmptyName = 3,       ///< nothing in front of the port, or between the brackets
        splitMissingBracket = 4,  ///< a bracket that is opened and not closed
        splitBadPort = 5          ///< the port is no decimal number from 1 to 65535
    };

    /// The address of a server, of one of the two families, with its port.
    class TARN_API Address {
      public:
        /// No address: family 0.
        Address() noexcept;
        /// A copy of an address; none when it is null or of another family, which is reported by assertion.
        explicit Address(const sockaddr* address);
        /// kIPv4, kIPv6, or 0.
        int getFamily() const noexcept;
        /// In host order; 0 when there is no address.
        unsigned short getPort() const noexcept;
        /// Valid as long as the object.
        const sockaddr* getAddress() const noexcept;
        /// As getipstring: without the port.
        SAnsiString toString() const;

      private:
        alignas(8) unsigned char bytes_[28];  ///< what an IPv6 address takes
    };

    /// A server for ping, and what came of it.
    class TARN_API ServerToPing {
      public:
        /// ping resolves the host.
        ServerToPing(const SAnsiString& host, unsigned short port);
        /// ping uses this address; the host is its text.
        explicit ServerToPing(const Address& address);
        /// ping uses these addresses; host and port are those of the first one.
        explicit ServerToPing(const SIArray<Address>& addresses);

        /// The host in UTF-16.
        SWCharString getHost() const;
        /// The host in the code page.
        const SAnsiString& getAnsiHost() const noexcept { return host_; }
        /// The port, in host order.
        unsigned short getPort() const noexcept { return port_; }
        /// What the server was built from, or what ping has resolved.
        const SIArray<Address>& getAddresses() const noexcept { return addresses_; }
        /// Replaces the addresses.
        void setAddresses(const SIArray<Address>& addresses);
        /// Records the address that answered.
        void setPingedAddress(const Address& address) noexcept { pinged_ = address; }
        /// The address that answered, of family 0 when none did.
        const Address& getPingedAddress() const noexcept { return pinged_; }
        /// True when an address answered.
        bool hasPingedAddress() const noexcept { return pinged_.getFamily() != 0; }

      private:
        SAnsiString host_;
        unsigned short port_;
        SIArray<Address> addresses_;
        Address pinged_;
    };

    // --- start-up ---
    /// Starts the system's sockets, version 2.0 or else 1.1. False, and traced, when it has neither. Each success
    /// asks for one uninitialize.
    static bool initialize();
    /// Takes one initialize back.
    static void uninitialize();

    // --- the system's calls of the same names; -1 or kInvalid for a failure, see getLastError ---
    /// A new socket.
    static unsigned socket(int family, int type, int protocol);
    /// Gives a socket an address of this machine.
    static int bind(unsigned s, const sockaddr* address, int length);
    /// Lets others connect; so many may wait to be accepted.
    static int listen(unsigned s, int backlog);
    /// The socket of one who has connected, and his address; both out arguments may be null.
    static unsigned accept(unsigned s, sockaddr* address, int* length);
    /// Connects, and waits for it as long as the system does.
    static int connect(unsigned s, const sockaddr* address, int length);
    /// Closes a socket.
    static int close(unsigned s);
    /// Ends receiving (0), sending (1) or both (2).
    static int shutdown(unsigned s, int how);
    /// Sends bytes; returns how many were taken.
    static int send(unsigned s, const char* bytes, int count, int flags);
    /// Receives bytes; returns how many came, 0 when the peer has ended.
    static int recv(unsigned s, char* bytes, int count, int flags);
    /// Waits for one of some sockets; returns how many are ready, 0 after the time.
    static int select(int count, fd_set* read, fd_set* write, fd_set* except, const timeval* limit);
    /// The address of this end.
    static int getsockname(unsigned s, sockaddr* address, int* length);
    /// The error number of the thread's last call that failed.
    static int getLastError();

    // --- fields of an address ---
    /// The family.
    static int getFamily(const sockaddr* address);
    /// Sets the family.
    static void setFamily(sockaddr* address, int family);
    /// The port, in host order; 0 for an unknown family.
    static unsigned short getPort(const sockaddr* address);
    /// Sets the port, given in host order; nothing happens for an unknown family.
    static void setPort(sockaddr* address, unsigned short port);
    /// Makes it the wildcard address of its family; the port stays.
    static void setAny(sockaddr* address);
    /// 16 or 28 bytes; another family is reported by assertion and gives 0.
    static int getSize(const sockaddr* address);

    // --- names and addresses; 0, or the code of the resolver (getErrorStr) ---
    /// The first address as text.
    static int gethostbyname(const SAnsiString& host, SAnsiString& text);
    /// The first IPv4 address.
    static int gethostbyname(const SAnsiString& host, unsigned long& v4NetworkOrder);
    /// All IPv4 addresses.
    static int gethostbyname(const SAnsiString& host, SIArray<unsigned long>& v4NetworkOrder);
    /// The first address, with a port.
    static int gethostbyname(const SAnsiString& host, unsigned short port, sockaddr_storage& address);
    /// All addresses, in the order in which they are tried: one block of 128 bytes an address, which the caller
    /// gives to freehosts, and their number. Null and 0 with a failure; 8 is one to allocate the block.
    static int gethostsbyname(const SAnsiString& host, sockaddr_storage*& block, unsigned& count);
    /// Frees the block of gethostsbyname; null does nothing.
    static void freehosts(sockaddr_storage* block);

    // --- the same with false for a failure ---
    /// All addresses as texts.
    static bool getipaddresses(const SAnsiString& host, SIArray<SAnsiString>& texts);
    /// Those of one family.
    static bool getipaddresses(const SAnsiString& host, int family, SIArray<SAnsiString>& texts);
    /// The name of an IPv4 address.
    static bool gethostbyaddr(unsigned long v4NetworkOrder, SAnsiString& name);
    /// The full name of a host given by name or address; of this machine when it is empty.
    static bool getcanonicalname(const SAnsiString& host, SAnsiString& name);
    /// The names of this machine.
    static bool gethostnames(SISet<SAnsiString>& names);
    /// The names of a host: the one given if it is no address, the full name, and those of its addresses.
    static bool gethostnames(const SAnsiString& host, SISet<SAnsiString>& names);
    /// The n-th IPv4 address of this machine, from 0.
    static bool getnthipnumeric(int n, unsigned long& v4NetworkOrder);
    /// The same as text.
    static bool getnthipstring(int n, SAnsiString& text);
    /// The address as text, without the port and without brackets, a zone behind "%"; empty when it is none.
    static SAnsiString getipstring(const sockaddr* address);
    /// The TCP port of a service that the system knows by name; otherwise the default.
    static int getportbyname(const SAnsiString& service, int dflt);

    // --- texts of hosts ---
    /// True for what isNumericIPv4 or isNumericIPv6 takes.
    static bool isNumericAddress(const SAnsiString& text);
    /// True when the first character is a digit and there is no colon: a quick look, which "3com.com" passes.
    static bool isNumericIPv4(const SAnsiString& text);
    /// True when there are two colons at least: a quick look, which "a:b:c" passes.
    static bool isNumericIPv6(const SAnsiString& text);
    /// True for 127.0.0.0/8, ::1, and the former in an IPv6 address.
    static bool isLoopback(const sockaddr* address);
    /// True for the text of an address in 127.0.0.0/8.
    static bool isLoopbackIPv4(const SAnsiString& text);
    /// True for the text of an IPv6 loopback address, with or without brackets.
    static bool isLoopbackIPv6(const SAnsiString& text);
    /// True for four decimal numbers up to 255 with points between them, without leading zeros.
    static bool isValidIPAddrString(const SAnsiString& text);
    /// The same, and tells the address; unchanged when it is none.
    static bool isValidIPAddrString(const SAnsiString& text, unsigned long& v4NetworkOrder);
    /// True when two texts mean one host: the same name or address, both this machine ("localhost", "127.0.0.1",
    /// "::1" and its own name do), or, when they may be resolved, names that have an address in common. Case
    /// and brackets do not count. An empty text means no host.
    static bool matchhosts(const SAnsiString& a, const SAnsiString& b, bool resolve = true);
    /// "host:port"; an IPv6 address gets brackets unless it has them.
    static SAnsiString appendPort(const SAnsiString& host, unsigned short port);
    /// The same with the port as text.
    static SAnsiString appendPort(const SAnsiString& host, const SAnsiString& port);
    /// True for splitOk of splitNamePortDetailed.
    static bool splitNamePort(const SAnsiString& text, SAnsiString& name, unsigned short& port);
    /// Takes apart what appendPort puts together; brackets are taken off, a zone stays. Two colons or more without
    /// brackets are a name without a port. The name is set for splitOk and splitNoPort, the port for splitOk.
    static _splitNamePort_RC splitNamePortDetailed(const SAnsiString& text, SAnsiString& name,
                                                   unsigned short& port);

    // --- connecting; each attempt waits as long as the system does ---
    /// Connects a socket to a host's first IPv4 address.
    static int connectEx(unsigned s, const SAnsiString& host, unsigned short port);
    /// Connects a socket to a host's first address of a family. 0; the code of the resolver; -1, see getLastError.
    static int connectEx(unsigned s, const SAnsiString& host, unsigned short port, int family);
    /// Connects a new socket to the first address of a host that takes the connection.
    static int connectMulti(const SAnsiString& host, unsigned short port, unsigned& s);
    /// The same, and tells the family of the last address tried. 0; the code of the resolver; the error of the last
    /// address, with no socket.
    static int connectMulti(const SAnsiString& host, unsigned short port, unsigned& s, int& family);
    /// Connects, and tries again, a second apart, what is refused or does not answer in time: "retries" times, or
    /// for ever (kForever). A second passes after the last failure, too, deliberately. False when it was not
    /// to be had.
    static bool connectNonBlocking(unsigned s, const sockaddr* address, int length, unsigned timeoutSeconds,
                                   unsigned short retries);
    /// Connects to all addresses of all servers at once, and waits until each server has answered or can not, or
    /// the time is over. Each server records the first of its addresses that took the connection; nothing stays
    /// open. True when one server answered at least. 64 addresses in all; what is beyond is reported by assertion
    /// and not tried.
    static bool ping(std::list<ServerToPing>& servers, unsigned timeoutSeconds);

    // --- waiting ---
    /// 1 when there is something to receive, or the end; 0 after the time; -1 for an error.
    static int isReadable(unsigned s, unsigned seconds);
    /// 1 when something can be sent; 0 after the time; -1 for an error. The third argument means nothing.
    static int isWriteable(unsigned s, unsigned seconds, unsigned ignored = 0);
    /// The same in whole seconds: 999 milliseconds are none, deliberately.
    static int isWriteableMS(unsigned s, unsigned milliseconds);
    /// Sets the time-out of receiving, in milliseconds; below 1 nothing is set. 0 or -1.
    static int setTimeout(unsigned s, int milliseconds);
    /// True when a TCP port of this machine cannot be bound: that of the service if its name is known, otherwise
    /// the one given. A port below 1 is free. IPv6 is asked only when IPv4 is free and "both" is set.
    static bool is_port_in_use(bool both, const SAnsiString& service, int port);
    /// The same for both families.
    static bool is_port_in_use(const SAnsiString& service, int port);
    /// True for IPv4 only, deliberately, whatever the machine has.
    static bool haveStack(int family);

    // --- texts of errors ---
    /// "WSA" and the number of the last socket error: "WSA10061".
    static SAnsiString getLastErrorStr();
    /// "error number EAI_NONAME" and the like for a code of the resolver; "unknown error!" for all others.
    static SAnsiString getErrorStr(int code);
};

}  // namespace TarnLibA500
