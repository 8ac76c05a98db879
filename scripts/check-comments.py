#!/usr/bin/env python3
"""Checks that every public declaration of the public headers has a comment of its own, of the kind that tools show.

    check-comments.py [ROOT] [HEADER...]   prints each declaration without one and a count for each header, and fails if
                                           there is one; without headers: all of export/iface
    check-comments.py --self-test          shows that the check finds what it is to find

A comment is "///" in the lines directly above or "///<" behind the declaration, and belongs to one declaration. Functions,
types, constants, members, enumerators and macros need one. What a comment could only restate does not: defaulted and
deleted members, destructors, forward declarations, friends that are declared elsewhere, using-declarations, and
definitions of what a class has declared.
"""
import pathlib
import re
import sys

TOKEN = re.compile(r"""
    (?P<space>\s+)
  | (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<text>(?:u8|[LuU])?"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])+')
  | (?P<name>~?[A-Za-z_]\w*)
  | (?P<number>\.?\d(?:[eEpP][+-]|['\w.])*)
  | (?P<mark>::|->|<=>|<<=?|[-+*/%&|^=!<>]=|&&|\|\||\+\+|--|\.\.\.|.)
""", re.VERBOSE | re.DOTALL)
DIRECTIVE = re.compile(r"^[ \t]*#(?:[^\n\\]|\\.)*", re.MULTILINE | re.DOTALL)
MACRO = re.compile(r"\s*#\s*define\s+(\w+)")
TYPES = {"class", "struct", "union", "enum"}
ACCESS = {"public": True, "protected": True, "private": False}
OPENERS, CLOSERS = {"(": ")", "[": "]", "{": "}"}, {")", "]", "}"}
# A block after these, or before these, is a value and not the body of a function.
VALUE_FOLLOWS = {";", ",", "{", ")", "."}


class Declaration:
    """Where a declaration begins, and the lines on which a comment behind it may stand."""

    def __init__(self, name, first, ends):
        self.name, self.first, self.ends = name, first, ends


class Header:
    def __init__(self, text):
        self.found = []  # declarations that need a comment
        self.above = set()  # lines that have nothing but "///"
        self.behind = set()  # lines with "///<"
        self.plain = set()  # lines that have nothing but another comment
        self.tokens = []
        self.read_macros(text)
        # Directives have no tokens; their lines stay, so that numbers of lines hold.
        self.read_tokens(DIRECTIVE.sub(lambda match: "\n" * match.group().count("\n"), text))
        self.at = 0
        self.read_scope(True, "")

    # ------------------------------------------------------------------------------------------ the text

    def read_macros(self, text):
        seen = set()
        for directive in DIRECTIVE.finditer(text):
            macro = MACRO.match(directive.group())
            if macro and macro.group(1) not in seen:
                seen.add(macro.group(1))
                line = text.count("\n", 0, directive.start()) + 1
                self.found.append(Declaration("macro " + macro.group(1), line, {line}))

    def read_tokens(self, text):
        line, has_code = 1, False
        for match in TOKEN.finditer(text):
            word, kind = match.group(), match.lastgroup
            if kind == "comment":
                self.keep_comment(word, line, has_code)
            elif kind != "space":
                self.tokens.append((word, line))
                has_code = True
            if "\n" in word:
                has_code = False
            line += word.count("\n")

    def keep_comment(self, word, line, has_code):
        if word.startswith("///<"):
            self.behind.add(line)
        elif not has_code:
            lines = self.above if word.startswith("///") and not word.startswith("////") else self.plain
            lines.update(range(line, line + word.count("\n") + 1))

    # ------------------------------------------------------------------------------------------ the declarations

    def word(self, ahead=0):
        place = self.at + ahead
        return self.tokens[place][0] if place < len(self.tokens) else ""

    def line(self):
        return self.tokens[min(self.at, len(self.tokens) - 1)][1]

    def skip_block(self):
        """Steps over brackets and all that is between them."""
        depth = 0
        while self.at < len(self.tokens):
            depth += (self.word() in OPENERS) - (self.word() in CLOSERS)
            self.at += 1
            if depth == 0:
                return

    def read_scope(self, is_public, owner):
        """Up to the end of the brace that holds it, which is stepped over; owner: the class, or "" in a namespace."""
        while self.at < len(self.tokens) and self.word() != "}":
            if self.word() in ACCESS and self.word(1) == ":":
                is_public = ACCESS[self.word()]
                self.at += 2
            elif self.word() == ";":
                self.at += 1
            else:
                self.read_declaration(is_public, owner)
        self.at += 1

    def read_declaration(self, is_public, owner):
        first, words = self.line(), []
        while self.at < len(self.tokens):
            word = self.word()
            if word == ";":
                end = self.line()
                self.at += 1
                return self.keep(words, first, {end}, is_public, owner)
            if word == "}":
                return None
            if word == "{":
                head = without_template(words)
                if "namespace" in head[:2] or head[:1] == ["extern"]:
                    self.at += 1
                    return self.read_scope(True, "")
                kind = kind_of_type(head)
                if kind:
                    return self.read_type(kind, head, first, is_public)
                start = self.line()
                self.skip_block()
                end = self.tokens[self.at - 1][1]
                if self.word() not in VALUE_FOLLOWS or words[-1:] == [")"] and self.word() == ";":
                    return self.keep(words + ["{}"], first, {start, end}, is_public, owner)
                words.append("{}")
            elif word in ("(", "["):
                begin = self.at
                self.skip_block()
                words += [token for token, _ in self.tokens[begin:self.at]]
            else:
                words.append(word)
                self.at += 1
        return None

    def read_type(self, kind, head, first, is_public):
        name = name_of_type(head)
        if is_public:
            self.found.append(Declaration(f"{kind} {name}", first, {self.line()}))
        self.at += 1
        if kind == "enum":
            self.read_enumerators(is_public, name)
        else:
            self.read_scope(is_public and kind != "class", name) if is_public else self.skip_to_end()
        while self.at < len(self.tokens) and self.word() != ";":  # members of the type may follow it
            self.at += 1
        self.at += 1

    def skip_to_end(self):
        self.at -= 1
        self.skip_block()

    def read_enumerators(self, is_public, owner):
        while self.at < len(self.tokens) and self.word() != "}":
            name, first, end = self.word(), self.line(), self.line()
            while self.word() not in (",", "}", ""):
                end = self.line()
                self.skip_block() if self.word() in OPENERS else self.step()
            if self.word() == ",":
                end = self.line()
                self.at += 1
            if is_public:
                self.found.append(Declaration(f"{owner}::{name}", first, {end}))
        self.at += 1

    def step(self):
        self.at += 1

    def keep(self, words, first, ends, is_public, owner):
        if is_public and needs_comment(words):
            name = name_of(words)
            self.found.append(Declaration(f"{owner}::{name}" if owner else name, first, ends))

    # ------------------------------------------------------------------------------------------ the verdict

    def uncommented(self):
        """The declarations that no comment is left for: one above goes to the first on the next line, one behind to the
        last that ends on its line."""
        last_on = {}
        for declaration in self.found:
            for line in declaration.ends:
                last_on[line] = declaration
        taken, missing = set(), []
        for declaration in sorted(self.found, key=lambda each: each.first):
            before = declaration.first - 1
            while before in self.plain:
                before -= 1
            has_above = before in self.above and declaration.first not in taken
            taken.add(declaration.first)
            has_behind = any(line in self.behind and last_on[line] is declaration for line in declaration.ends)
            if not has_above and not has_behind:
                missing.append(declaration)
        return missing


def without_template(words):
    """Without template<...>, requires-clauses in parentheses and attributes in front."""
    at = 0
    while at < len(words):
        if words[at] == "template" and words[at + 1:at + 2] == ["<"]:
            at = after_angles(words, at + 1)
        elif words[at:at + 2] == ["[", "["]:
            at = words.index("]", at) + 2
        elif words[at] == "requires":
            at += 1
            while at < len(words) and words[at] not in TYPES and not words[at].startswith("TARN_"):
                at += 1
                if at < len(words) and words[at] in ("<", "("):
                    at = after_angles(words, at) if words[at] == "<" else after_parentheses(words, at)
                    if at >= len(words) or words[at] not in ("&&", "||"):
                        break
        else:
            break
    return words[at:]


def after_angles(words, at):
    depth = 0
    for place in range(at, len(words)):
        depth += {"<": 1, ">": -1, ">>": -2}.get(words[place], 0)
        if depth <= 0:
            return place + 1
    return len(words)


def after_parentheses(words, at):
    depth = 0
    for place in range(at, len(words)):
        depth += (words[place] == "(") - (words[place] == ")")
        if depth == 0:
            return place + 1
    return len(words)


def kind_of_type(head):
    """class, struct, union or enum when the words before a brace define one."""
    words = [word for word in head if word != "typedef"]
    if not words or words[0] not in TYPES or "=" in words:
        return None
    return words[0]


def name_of_type(head):
    names = []
    for word in head[1:]:
        if word in (":", "<"):
            break
        if re.match(r"[A-Za-z_]", word) and word not in TYPES and word not in ("final", "TARN_API", "alignas"):
            names.append(word)
    return names[-1] if names else "(without a name)"


def needs_comment(words):
    head = without_template(words)
    if not head or head[-2:] in (["=", "default"], ["=", "delete"]):
        return False
    if head[0] in ("static_assert", "extern") and head[1:2] != ["TARN_API"]:
        return False
    if head[0] == "template":  # an instantiation
        return False
    if head[0] in ("using", "namespace"):
        return head[0] == "using" and head[2:3] == ["="]
    if head[0] == "friend" and head[-1] != "{}":
        return False
    if head[0] in TYPES and "(" not in head and "=" not in head and len([w for w in head if w != "TARN_API"]) == 2:
        return False  # a forward declaration
    before = head[:head.index("(")] if "(" in head else head
    if any(word.startswith("~") and len(word) > 1 for word in before):
        return False
    return not is_definition_of_member(before)


def is_definition_of_member(before):
    """Class::member or Class<T>::member in front of the parameters."""
    if "operator" in before:
        before = before[:before.index("operator") + 1]
    if before[-2:-1] != ["::"]:
        return False
    return "using" not in before


def name_of(words):
    head = without_template(words)
    if head[:1] == ["using"]:
        return head[1]
    if "operator" in head:
        at = head.index("operator")
        end = head.index("(", at + 2) if "(" in head[at + 2:] else len(head)
        return "operator" + "".join(head[at + 1:end])
    for at in range(len(head) - 2):
        if head[at:at + 2] == ["(", "*"]:
            return head[at + 2]  # a pointer to a function
    for stop in ("(", "=", "{}", "["):
        if stop in head[1:]:
            head = head[:head.index(stop, 1)]
    names = [word for word in head if re.match(r"[A-Za-z_]", word)]
    return names[-1] if names else " ".join(head)


def missing_in(text):
    return Header(text).uncommented()


def self_test():
    cases = [
        ("/// A.\nclass TARN_API A {\n  public:\n    /// Makes one.\n    A() : n_{1}, m_(2) {}\n    A(const A&) = delete;\n"
         "    ~A();\n    int n() const { return n_; }  ///< its number\n  private:\n    int n_;\n};\n", []),
        ("/// Of the namespace.\nnamespace N {\nclass A {};\n}\n", ["class A"]),
        ("/// Two.\nvoid f(int a = {}, B b = {1, 2});\nvoid g();\n", ["g"]),
        ("void f(); void g();  ///< g alone\n", ["f"]),
        ("/// E.\nenum class E : int {\n    one,  ///< 1\n    two = f(1, 2), three  ///< 3\n};\n", ["E::two"]),
        ("/// S.\nstruct S {\n    /// a\n    int a = 0;\n    int b{1};\n    void (*d)(int);\n    static constexpr int c[] = {1, 2};\n};\n",
         ["S::b", "S::c", "S::d"]),
        ("/// T.\ntemplate <class T, class U = X<T>>\nrequires C<T>\nclass T1 {\n  public:\n    T1& operator=(int);\n"
         "    friend bool operator==(T1, T1) { return true; }\n    friend class Q;\n    using V::f;\n    using V::operator=;\n    using W = int;\n"
         "  protected:\n    void p();\n};\n"
         "template <class T, class U>\nT1<T, U>& T1<T, U>::operator=(int) {\n    return *this;\n}\n"
         "extern template class TARN_API T1<int>;\nclass Later;\n",
         ["T1::operator=", "T1::operator==", "T1::W", "T1::p"]),
        ("/// M.\n#define M(x) \\\n    { x; }\n#define N 1\n", ["macro N"]),
        ("/// far away\n\nint a();\n/// near\n// NOLINTNEXTLINE\nint b();\n//// ruler\nint c();\n", ["a", "c"]),
        ("/// C.\nclass C {\n    int hidden;\n    struct Inner { int x; };\n  public:\n    /// I.\n    struct I {\n"
         "        int x;\n    };\n    explicit operator bool() const;\n    int operator()(int) const;\n};\n",
         ["C::operatorbool", "C::operator()", "I::x"]),
    ]
    for text, expected in cases:
        found = [declaration.name for declaration in missing_in(text)]
        if sorted(found) != sorted(expected):
            sys.exit(f"self-test:\n{text}expected {expected}, found {found}")
    print(f"{len(cases)} cases ok")


def main():
    arguments = sys.argv[1:]
    if arguments == ["--self-test"]:
        return self_test()
    root = pathlib.Path(arguments[0] if arguments else ".")
    headers = [pathlib.Path(name) for name in arguments[1:]] or sorted((root / "export/iface").rglob("*.h*"))
    counts = {}
    for header in headers:
        missing = missing_in(header.read_text(encoding="utf-8"))
        for declaration in missing:
            print(f"{header}:{declaration.first}: {declaration.name} has no comment of its own")
        if missing:
            counts[header.name] = len(missing)
    for name, count in counts.items():
        print(f"{count:5} {name}")
    print(f"{len(headers)} headers, {sum(counts.values())} declarations without a comment")
    sys.exit(1 if counts or not headers else 0)


main()
