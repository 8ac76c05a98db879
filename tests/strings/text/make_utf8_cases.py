#!/usr/bin/env python3
"""Writes cases of narrow text that is UTF-8, with what Python's own strings say: a text is a list of characters.

    make_utf8_cases.py > FILE       lines of a case file: function | result | arguments |
"""
import random

SPACES = "\t\n\v\f\r \x85\xa0\u1680\u2028\u2029\u202f\u205f\u3000" + "".join(map(chr, range(0x2000, 0x200b)))
PIECES = (list("aAbB ,;/.\\\"'") + "é É ß ı İ Ⱥ ⱥ ſ K ж Ж 　 日 本 ｱ \u0301 \U0001F600 \U00010400 \U00010428 \U0010FFFF".split(" ")
          + ["\xa0", "\u2003"])
BROKEN = [bytes.fromhex(h) for h in """80 BF C080 C1BF C2 C27F C2C0 E09FBF E0A0 E1807F E280 EDA080 EDBFBF EDA081EDB080
          F08FBFBF F09080 F09F98 F1 F18080C0 F4908080 F5 F5808080 F8808080 FC FE FF FFFE""".split()]


def characters(data):
    """An invalid byte is a character by itself."""
    return [c.encode("utf-8", "surrogateescape") for c in data.decode("utf-8", "surrogateescape")]


def is_valid(data):
    return all(len(c) > 1 or c < b"\x80" for c in characters(data))


def find(text, what, last=False):
    """The byte where a text begins, or the end: by characters, and never for an invalid text."""
    where, wanted = characters(text), characters(what)
    if not is_valid(what):
        return len(text)
    if not wanted:
        return len(text) if last else 0
    places = [i for i in range(len(where)) if where[i:i + len(wanted)] == wanted]
    return len(b"".join(where[:places[-1 if last else 0]])) if places else len(text)


def other_case(c, other):
    """The system maps a letter to one that maps back, and where that would be two in Greek to title case."""
    simple = other(c) if len(other(c)) == 1 else c.title()
    back = {f(simple) if len(f(simple)) == 1 else simple.title() for f in (str.lower, str.upper)}
    return simple if len(simple) == 1 and c in back else c


def mapped(text, other):
    """Up to the first character that is invalid."""
    every = characters(text)
    end = next((i for i, c in enumerate(every) if not is_valid(c)), len(every))
    return "".join(other_case(c.decode(), other) for c in every[:end]).encode() + b"".join(every[end:])


def only(text, test):
    return b"".join(c if test(c) else b"?" for c in characters(text))


def yes(answer):
    return b"yes" if answer else b"no"


def string_cases(text, part, n, m):
    every = characters(text)
    put = characters(part)[:1]
    yield "find", find(text, part), part
    yield "find last", find(text, part, True), part
    wanted = characters(part)
    yield "starts with", yes(is_valid(part) and every[:len(wanted)] == wanted), part
    yield "ends with", yes(is_valid(part) and every[len(every) - len(wanted):] == wanted), part
    yield "characters", len(every)
    yield "left", b"".join(every[:n]), n
    yield "right", b"".join(every[max(len(every) - n, 0):]), n
    yield "mid", b"".join(every[n:n + m]), n, m
    yield "delete", b"".join(every[:n] + every[n + m:]), n, m
    yield "insert", b"".join(every[:n]) + part + b"".join(every[n:]), part, n
    yield "set", b"".join(every[:n] + (put if n < len(every) and put else every[n:n + 1]) + every[n + 1:]), part, n
    kept = text.decode("utf-8", "surrogateescape").strip(SPACES)
    yield "trim", kept.encode("utf-8", "surrogateescape")
    yield "lower", mapped(text, str.lower)
    yield "upper", mapped(text, str.upper)
    yield "utf-8", only(text, is_valid)
    yield "from utf-8", text if is_valid(text) else b"no"
    yield "ascii", only(text, bytes.isascii)


def shown(field):
    field = str(field).encode() if isinstance(field, int) else field
    return "".join(chr(b) if 0x20 <= b < 0x7f and b not in b"|^#" else f"^{b:02X}" for b in field)


def random_text(most):
    pieces = [random.choice(BROKEN) if random.random() < 0.1 else random.choice(PIECES).encode()
              for _ in range(random.randrange(most + 1))]
    return b"".join(pieces) + b"x" * random.choice((0, 0, 0, 15, 16, 33))


def all_letters(other):
    """Every letter of Unicode with a case of its own, a line of them at a time."""
    letters = [chr(c) for c in range(0x80, 0x110000) if not 0xD800 <= c < 0xE000 and other(chr(c)) != chr(c)]
    for i in range(0, len(letters), 40):
        text = "".join(letters[i:i + 40])
        yield other.__name__, mapped(text.encode(), other), text.encode()


def cases():
    random.seed(20240229)
    for round_number in range(400):
        text = random_text(12) if round_number >= len(BROKEN) else b"a" + BROKEN[round_number] + b"b"
        places = [random.randrange(len(text) + 1) for _ in range(2)]
        part = random.choice([text[min(places):max(places)], random_text(2), random_text(1)])
        for function, result, *arguments in string_cases(text, part, random.randrange(9), random.randrange(9)):
            yield function, result, text, *arguments


for function, *fields in [*cases(), *all_letters(str.lower), *all_letters(str.upper)]:
    print("|".join([function, *map(shown, fields)]) + "|")
