#include <memory>

#include "assertwatch.h"
#include "command.h"
#include "options.h"
#include "system.h"
#include "tarnlib/coburl.h"
#include "tarnlib/frsurl.h"
#include "tarnlib/siuri.h"

namespace tarn {
namespace {

using TarnLibA500::CObUrl;
using TarnLibA500::CUrlBase;
using TarnLibA500::FRSUrl;
using TarnLibA500::FRSUrlException;
using TarnLibA500::SAnsiString;
using TarnLibA500::SIUri;

constexpr const char* kHelp =
    "-parse URL [-kind KIND] [-set NAME=VALUE]... [-make]\n\n"
    "Takes a URL apart, changes it and shows its parts.\n\n"
    "  -kind KIND         base (the usual one): protocol://server/path?query\n"
    "                     frs: a file in the file repository, frs://server/directory/file\n"
    "                     object: an object with properties, object-url?name=value&name=value\n"
    "                     uri: an object at a request broker, osca:iiop://server/name=value,name=value\n"
    "  -set NAME=VALUE    sets a part (base: protocol, server, path, query; frs: server, path, dir, file; "
    "object:\n"
    "                     url), or a property of an object, or adds a component to a uri\n"
    "  -make              prints nothing but the URL\n\n"
    "Exit status: 0; 1 when URL is none of that kind, or something in it is not well-formed.\n";

void PrintPart(const std::string& name, const SAnsiString& text) {
    std::string label = name + ":";
    label.resize(12, ' ');
    Print(label + Str(text) + "\n");
}

[[noreturn]] void ThrowNoPart(const std::string& name) {
    throw Failure("-set: there is no part \"" + name + "\"; tarn url -help lists them");
}

class Url {
  public:
    virtual ~Url() = default;
    virtual void set(const std::string& name, const SAnsiString& value) = 0;
    virtual void print() const = 0;
    virtual SAnsiString make() = 0;
};

class AnyUrl : public Url, CUrlBase {
  public:
    explicit AnyUrl(const SAnsiString& text) { ParseAndSetUrl(text); }
    void set(const std::string& name, const SAnsiString& value) override {
        if (name == "protocol") return SetProtocol(value);
        if (name == "server") return SetServer(value);
        if (name == "path") return SetPath(value);
        if (name == "query") return SetQueryString(value);
        ThrowNoPart(name);
    }
    void print() const override {
        PrintPart("protocol", GetProtocol());
        PrintPart("server", GetServer());
        PrintPart("path", GetPath());
        PrintPart("query", GetQueryString());
    }
    SAnsiString make() override { return MakeURL(); }
};

class FileUrl : public Url {
  public:
    explicit FileUrl(const SAnsiString& text) : url_(text) {}
    void set(const std::string& name, const SAnsiString& value) override {
        if (name == "server") return url_.SetServer(value);
        if (name == "path") return url_.SetPath(value);
        if (name == "dir") return url_.SetDir(value);
        if (name == "file") return url_.SetFilename(value);
        ThrowNoPart(name);
    }
    void print() const override {
        PrintPart("server", url_.GetServer());
        PrintPart("path", url_.GetPath());
        PrintPart("dir", url_.GetDir());
        PrintPart("file", url_.GetFilename());
        PrintPart("original", FRSUrl::GetOriginalFilename(url_.GetFilename()));
    }
    SAnsiString make() override { return url_.MakeURL(); }

  private:
    FRSUrl url_;
};

class ObjectUrl : public Url {
  public:
    explicit ObjectUrl(const SAnsiString& text) : url_(text) {}
    void set(const std::string& name, const SAnsiString& value) override {
        if (name == "url") return url_.SetObjectUrl(value);
        url_.SetPropString(name.c_str(), value);
    }
    void print() const override {
        PrintPart("url", url_.GetObjectUrl());
        for (auto i = url_.Begin(); i != url_.End(); ++i)
            Print("  " + Str(CObUrl::GetName(i).getString()) + " = " + Str(CObUrl::GetValueString(i)) + "\n");
    }
    SAnsiString make() override { return url_.MakeURL(); }

  private:
    CObUrl url_;
};

class BrokerUri : public Url {
  public:
    explicit BrokerUri(const SAnsiString& text) : uri_(text) {}
    void set(const std::string& name, const SAnsiString& value) override {
        uri_.insertComponent(name.c_str(), value);
    }
    void print() const override {
        PrintPart("protocol", uri_.GetProtocol());
        PrintPart("server", uri_.GetServer());
        PrintPart("path", uri_.GetPath());
    }
    SAnsiString make() override { return uri_.makeURI(); }

  private:
    SIUri uri_;
};

std::unique_ptr<Url> Parse(const std::string& kind, const SAnsiString& text) {
    if (kind.empty() || kind == "base") return std::make_unique<AnyUrl>(text);
    if (kind == "frs") return std::make_unique<FileUrl>(text);
    if (kind == "object") return std::make_unique<ObjectUrl>(text);
    if (kind == "uri") return std::make_unique<BrokerUri>(text);
    throw Failure("-kind must be base, frs, object or uri");
}

void Change(Url& url, const std::string& setting) {
    const std::size_t equals = setting.find('=');
    if (equals == setting.npos || equals == 0) throw Failure("-set: \"" + setting + "\" is not NAME=VALUE");
    url.set(setting.substr(0, equals), setting.substr(equals + 1).c_str());
}

ExitStatus ShowUrl(const Words& arguments) {
    const Options options(arguments,
                          {.required = {"parse"}, .values = {"kind", "set"}, .switches = {"make"}});
    const AssertWatch watch;  // what is not well-formed is reported
    try {
        const std::unique_ptr<Url> url = Parse(options.value("kind"), options.value("parse").c_str());
        for (const std::string& setting : options.values("set")) Change(*url, setting);
        if (!options.has("make")) url->print();
        Print((options.has("make") ? "" : "made:       ") + Str(url->make()) + "\n");
    } catch (const FRSUrlException& failure) {
        Print(Str(failure.toString()) + "\n");
        return kNo;
    } catch (const SAnsiString& failure) {
        Print(Str(failure) + "\n");
        return kNo;
    }
    if (!watch.sawOne()) return kYes;
    PrintError("tarn url: something in the URL is not well-formed");
    return kNo;
}

}  // namespace

const Command kUrlCommand = {"url", "takes URLs apart and puts them together", kHelp, ShowUrl};

}  // namespace tarn
