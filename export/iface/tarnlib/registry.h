#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

struct HKEY__;
/// The system's handle of a key, as <windows.h> declares it.
typedef struct HKEY__* HKEY;

namespace TarnLibA500 {

/// One key of the Windows registry, its values and what is below it.
///
/// A key is a root (HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, ...) and the path below it, which must not end with
/// a backslash. It is opened for reading when it is first needed and stays open; writing opens it a second
/// time, because the first handle may not write, and makes it when it is missing. Keys are seen in the
/// process's own view (32 bits). Names and values are text in the process's code page, or in UTF-8
/// (SNarrowText); a character that it does not have is read as "?", and no other character takes its place.
/// Names ignore case.
///
/// Failures are results: false, an empty text, or no entry. Each is traced (unit "registry") with the key,
/// the value and the system's reason; that a key or a value is not there is an answer and no failure, except
/// for what is to be copied. What an operator should hear of, a refused access for instance, is also
/// reported by assertion. Only an allocation that fails throws, "bad allocation"; no key stays open then, and
/// the object is as it was. One thread at a time uses an object.
///
///     Registry settings("SOFTWARE\\velmora\\Mailer", "mailer", HKEY_CURRENT_USER, true);
///     SAnsiString host = settings.ReadValue("host", SAnsiString("localhost"));   // now it is there
///     SAnsiString port = settings.ReadValue("port", 25UL);                       // "25"
///     for (Registry::ValueIterator value = settings.EnumValues(); value; ++value)
///         Print(value.GetName(), value.GetValue());
class TARN_API Registry {
  public:
    /// What both kinds of iterators are: a position among the entries of a key. It has a handle of its own
    /// and is true while it stands on an entry. An entry that is deleted under way moves the ones behind it
    /// up. Where the system breaks the listing off, the iterator stands on no entry, which is traced.
    class TARN_API Iterator {
      public:
        Iterator(const Iterator&) = delete;
        Iterator& operator=(const Iterator&) = delete;

        /// True while it stands on an entry.
        explicit operator bool() const noexcept { return isOnEntry_; }
        /// The name of the entry. Empty for a key's default value.
        const SAnsiStringCI& GetKey() const noexcept { return name_; }
        /// The same: there are two words for it.
        const SAnsiStringCI& GetName() const noexcept { return name_; }

        /// Takes over the other's handle and position, and leaves it on no entry.
        void consume(Iterator& other) noexcept;
        /// Gives the handle up to the caller, who closes it, and stands on no entry.
        HKEY detach() noexcept;

      protected:
        /// Stands on no entry.
        Iterator() noexcept = default;
        /// Takes a handle of a key over.
        explicit Iterator(HKEY key) noexcept : key_(key) {}
        /// Closes the handle.
        ~Iterator();

        HKEY key_ = nullptr;      ///< its own; null when there is nothing to list
        unsigned long next_ = 0;  ///< the index of the next entry
        bool isOnEntry_ = false;  ///< whether the members below say something
        SAnsiStringCI name_;      ///< of the entry
        SAnsiString value_;       ///< the entry's text, where entries are values
    };

    /// The sub-keys of a key, in the system's order.
    class TARN_API KeyIterator : public Iterator {
      public:
        /// Stands on no entry.
        KeyIterator() noexcept = default;
        /// Takes over the other's handle and position.
        KeyIterator(KeyIterator&& other) noexcept { consume(other); }
        /// The same; its own handle is closed.
        KeyIterator& operator=(KeyIterator&& other) noexcept {
            consume(other);
            return *this;
        }
        /// Goes to the next sub-key.
        KeyIterator& operator++() {
            NextKey();
            return *this;
        }
        /// Goes to the next sub-key; false behind the last.
        bool NextKey();

      private:
        friend class Registry;
        explicit KeyIterator(HKEY key);
    };

    /// The values of a key with their texts, as ReadValue gives them. One that cannot be read is traced and
    /// empty.
    class TARN_API ValueIterator : public Iterator {
      public:
        /// Stands on no entry.
        ValueIterator() noexcept = default;
        /// Takes over the other's handle and position.
        ValueIterator(ValueIterator&& other) noexcept { consume(other); }
        /// The same; its own handle is closed.
        ValueIterator& operator=(ValueIterator&& other) noexcept {
            consume(other);
            return *this;
        }
        /// Goes to the next value.
        ValueIterator& operator++() {
            NextValue();
            return *this;
        }
        /// Goes to the next value; false behind the last.
        bool NextValue();
        /// The text of the value.
        const SAnsiString& GetValue() const noexcept { return value_; }

      private:
        friend class Registry;
        explicit ValueIterator(HKEY key);
    };

    /// The key is not touched yet. "name" is what GetKeyName shows to people. With "create" a missing key is
    /// made when a value is read from it; to ask, to list and to delete never make one, and to write always
    /// does.
    Registry(const SAnsiStringCI& subKey, const SAnsiStringCI& name, HKEY const& root, bool create);
    /// The same key; the copy opens it anew.
    Registry(const Registry& other);
    /// Turns to the other's key, which is opened anew; its own is closed.
    Registry& operator=(const Registry& other);
    /// Closes the key.
    ~Registry();

    /// True when the key can be opened for reading. A refused access is reported ("KeyExists failed. Access
    /// Denied").
    bool KeyExists();

    /// A value as text: REG_SZ as it is, REG_DWORD as an unsigned decimal number, REG_EXPAND_SZ with
    /// environment variables expanded (to 259 characters at most; more is reported and empty). Empty when it
    /// is missing, and for the other types.
    SAnsiString ReadValue(const SAnsiStringCI& name);
    /// The same; a missing value is first written with the default, deliberately, so that settings can be
    /// found. An empty value is not missing, nor is one that cannot be read at present. What is read back is
    /// returned; when it is not the default this is reported.
    SAnsiString ReadValue(const SAnsiStringCI& name, const SAnsiString& defaultValue);
    /// The same with a number for the default, which is written as REG_DWORD.
    SAnsiString ReadValue(const SAnsiStringCI& name, unsigned long defaultValue);

    /// Writes a value as REG_SZ. False, and reported, when the system refuses to open the key or to write.
    bool WriteValue(const SAnsiStringCI& name, const SAnsiString& value);
    /// Writes a value as REG_DWORD; otherwise the same.
    bool WriteValue(const SAnsiStringCI& name, unsigned long value);

    /// True, with the system's number of the type (1: REG_SZ, 2: REG_EXPAND_SZ, 4: REG_DWORD, ...), when the
    /// value is there.
    bool GetType(const SAnsiStringCI& name, unsigned long& type);

    /// True when the value was there and is gone.
    bool DeleteValue(const SAnsiStringCI& name);
    /// Deletes the key with its values; refused, and reported, when it has sub-keys. True when it was there
    /// and is gone. A root is not deleted.
    bool DeleteKey();
    /// Deletes everything below the key, depth first, and with "self" the key too. True when the key was
    /// there and all is gone; after a failure what was deleted until then is gone. What is below a root is
    /// not deleted, nor what a link below the key leads to: the link goes.
    bool DeleteKeyRecursive(bool self = true);

    /// The sub-keys. On no entry when the key is missing.
    KeyIterator EnumSubKeys();
    /// The values. On no entry when the key is missing.
    ValueIterator EnumValues();

    /// Copies a key with its values, of all types byte by byte, and its sub-keys into another, which is made
    /// when it is missing; what is already there stays. False when the source is missing, when the target is
    /// the source or lies in it, in whatever words the two are named, and when the system refuses; what was
    /// copied until then stays. A link below the source is copied as a link.
    static bool CopyKey(HKEY sourceRoot, const SAnsiStringCI& source, HKEY targetRoot,
                        const SAnsiStringCI& target);
    /// Copies one value, of any type, into a key, which is made when it is missing. False when the value is
    /// missing and when the system refuses.
    static bool CopyValue(HKEY sourceRoot, const SAnsiStringCI& source, const SAnsiStringCI& name,
                          HKEY targetRoot, const SAnsiStringCI& target);

    /// Turns to the registry of another machine ("server" or "\\server"); an empty name is this one. It is
    /// connected when the key is next opened.
    void SetRemoteMachine(SAnsiString machine);
    /// Takes a handle of a root of another machine, which the caller keeps and closes.
    void SetRemoteKeyHandle(HKEY root);
    /// As it was given to SetRemoteMachine; empty for this machine.
    const SAnsiString& GetRemoteMachineName() const noexcept { return machine_; }
    /// True when the key is one of another machine.
    bool IsRemoteReg() const noexcept { return isRemote_; }

    /// The name for people.
    const SAnsiStringCI& GetKeyName() const noexcept { return name_; }
    /// The path below the root.
    const SAnsiStringCI& GetSubKey() const noexcept { return subKey_; }

  protected:
    /// The text of a value of an open key, and its type. The type is 0 when the value is missing.
    SAnsiString ReadValue(const SAnsiStringCI& name, HKEY& key, unsigned long& type);
    /// Writes a value of an open key as REG_SZ.
    bool WriteValue(const SAnsiStringCI& name, const SAnsiString& value, HKEY& key);
    /// Writes a value of an open key as REG_DWORD.
    bool WriteValue(const SAnsiStringCI& name, unsigned long value, HKEY& key);

  private:
    template <class Query>
    long query(bool mayCreate, const SAnsiStringCI* value, Query call);
    template <class Value>
    bool writeOpening(const SAnsiStringCI& name, const Value& value);
    long look(bool mayCreate, const SAnsiStringCI& name, unsigned long& type);
    SAnsiString readBack(const SAnsiStringCI& name, const SAnsiString& expected, const char* expression);
    SAnsiString machineName() const;
    SAnsiString place(const SAnsiStringCI* value) const;
    void trace(const char* doing, const SAnsiStringCI* value, long error) const;
    bool isPathUsable() const;
    bool isWritten(const SAnsiStringCI& name, long error) const;
    bool isDeleted(long error) const;
    long rootInUse(HKEY& root);
    long open(bool mayCreate);
    long openReported(bool mayCreate);
    long openForWrite(bool mayCreate, HKEY& key);
    HKEY openForIterator();
    bool write(const SAnsiStringCI& name, unsigned long type, const void* data, unsigned long bytes,
               HKEY key);
    void close() noexcept;
    void disconnect() noexcept;
    void swap(Registry& other) noexcept;

    SAnsiStringCI subKey_;
    HKEY root_;
    SAnsiStringCI name_;
    SAnsiString machine_;
    HKEY remoteRoot_ = nullptr;
    bool isRemote_ = false;
    bool ownsRemoteRoot_ = false;
    HKEY key_ = nullptr;
    bool create_;
};

}  // namespace TarnLibA500
