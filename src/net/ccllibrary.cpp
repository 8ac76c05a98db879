// Loading and starting the TLS library.
#include "net/ccllibrary.h"

#include <atomic>
#include <memory>

#include "diag/assert/levels.h"
#include "tarnlib/straceobj.h"
#include "waiting/waiting.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "cclsocket";

/// Gives the factory back; the entries stay valid.
struct Release {
    void operator()(Factory* factory) const { factory->release(factory); }
};
using OwnedFactory = std::unique_ptr<Factory, Release>;

bool Failed(const char* text) {
    TARN_TRACE_AT(levels::kFailure, kUnit, "cclLibInit: %1", text);
    return false;
}

/// The functions of a factory by name.
class Resolver {
  public:
    explicit Resolver(Factory* factory) : factory_(factory) {}

    /// One that the library need not have.
    template <class Function>
    void find(const char* name, Function*& function) const {
        function = reinterpret_cast<Function*>(factory_->resolve(factory_, name));
    }
    /// One that it must have.
    template <class Function>
    bool operator()(const char* name, Function*& function) const {
        find(name, function);
        if (function == nullptr) TARN_TRACE_AT(levels::kFailure, kUnit, "cclLibInit: %1 not found", name);
        return function != nullptr;
    }

  private:
    Factory* factory_;
};

/// Finds a function that starts something, and calls it.
template <class Function>
bool Start(const Resolver& resolve, const char* name, Function* function) {
    if (!resolve(name, function)) return false;
    if (function() == 1) return true;
    TARN_TRACE_AT(levels::kFailure, kUnit, "cclLibInit: %1 failed", name);
    return false;
}

bool ResolveAll(const Resolver& resolve, ostls::Table& table) {
    resolve.find("SSL_pending", table.pending);
    resolve.find("SSL_describe", table.describe);
    resolve.find("aux_get_Certificate_text", table.textOf);
    // A library that cannot be told the host's name could not refuse a stranger's certificate.
    return resolve("SSL_API_get_last_error", table.lastError) && resolve("SSL_CTX_new", table.newContext) &&
           resolve("SSL_CTX_set_default_pse_by_name", table.setStore) &&
           resolve("SSL_CTX_set_options", table.setOptions) && resolve("SSL_CTX_free", table.freeContext) &&
           resolve("SSL_new", table.newConnection) && resolve("SSL_set_fd", table.setSocket) &&
           resolve("SSL_set_verify_host", table.setHost) && resolve("SSL_connect", table.connect) &&
           resolve("SSL_read", table.read) && resolve("SSL_write", table.write) &&
           resolve("SSL_shutdown", table.shutdown) && resolve("SSL_free", table.freeConnection) &&
           resolve("SSL_get_peer_certificates", table.peerCertificates) &&
           resolve("aux_get_Certificate_n_from_Certificates", table.certificateAt) &&
           resolve("aux_free_Certificate", table.freeCertificate);
}

MirelGetList* LoadModule(CSharedLibrary& module) {
    try {
        module.Load("mirelcrypto.dll");
    } catch (const CSharedLibraryException&) {  // it has traced the reason
        Failed("cannot load library");
        return nullptr;
    }
    auto* const found = reinterpret_cast<MirelGetList*>(module.TryResolve("cryptolib_get_f_list"));
    if (found == nullptr) Failed("cannot load get function list");
    return found == nullptr ? nullptr : ostls::getList.orElse(found);
}

}  // namespace

bool LoadCclLibrary(CclLibrary& library) {
    constexpr int kVersion = 2;
    MirelGetList* const getList = LoadModule(library.module);
    if (getList == nullptr) return false;
    const FList* const list = getList(kVersion, "en_US", "Tarnlib::Socket");
    const OwnedFactory factory(list == nullptr ? nullptr : list->get_factory(list, "MIRELCCL_1"));
    if (factory == nullptr) return Failed("cannot create factory");
    const Resolver resolve(factory.get());
    return Start<MirelStartup>(resolve, "SSL_API_startup", nullptr) &&
           Start<MirelInit>(resolve, "mirelcr_init", nullptr) && ResolveAll(resolve, library.table);
}

const ostls::Table* CclFunctions() {
    static constinit waiting::Lock lock;
    static constinit std::atomic<const CclLibrary*> kept = nullptr;
    if (const CclLibrary* const library = kept.load(std::memory_order_acquire)) return &library->table;
    const waiting::Guard guard(lock);
    if (!guard.holds()) return nullptr;
    if (const CclLibrary* const library = kept.load(std::memory_order_relaxed)) return &library->table;
    auto loaded = std::make_unique<CclLibrary>();
    if (!LoadCclLibrary(*loaded)) return nullptr;
    kept.store(loaded.get(), std::memory_order_release);
    return &loaded.release()->table;  // sockets may use it as long as there is a process
}

}  // namespace TarnLibA500
