#!/usr/bin/env python3
"""What the tool escapes and takes apart, as Node and Python read it.

    run_url_cases.py RUNNER TARN_EXE SCRATCH_FOLDER

Where the rules differ is said in the place: docs/url.md has the list.
"""
import html
import pathlib
import random
import re
import shutil
import subprocess
import sys
import urllib.parse

CUT = "\x01"  # between the texts, so that one process takes all of them
ALPHABET = "abZ09 ~*-._'\"\\/<>&=%+?#{}[],$\r\n\t\0\x1f\x7fé€あ\u2028\u2029\u2027\ufffd😀𝒳" + "%u00E9%41"
EVALUATE = """
const read = (name) => require('fs').readFileSync(process.argv[1] + '/' + name, 'utf8');
const wanted = {js: read('text').replace(/\\r\\n?/g, '\\n'), wide: read('text'), reduced: read('text')};
const made = {js: eval('"' + read('js') + '"'), wide: unescape(read('wide').replace(/\\+/g, ' ')),
              reduced: unescape(read('reduced'))};
if (eval("'" + read('js') + "'") !== made.js) console.log('js: the kind of quotes matters');
for (const what in wanted) {
    const texts = wanted[what].split('\\x01'), others = made[what].split('\\x01');
    texts.forEach((text, i) => { if (text !== others[i]) console.log(what, JSON.stringify([text, others[i]])); });
}
console.log('compared');
"""


def evaluate_vbscript(expression):
    part = r'"((?:[^"]|"")*)"|chr\((\d+)\)'
    assert re.fullmatch(f"(?:{part})(?: \\+ (?:{part}))*", expression), expression
    return "".join(chr(int(number)) if number else text.replace('""', '"')
                   for text, number in re.findall(part, expression))


def main(*arguments):
    runner, tool, scratch = (pathlib.Path(argument).resolve() for argument in arguments)
    shutil.rmtree(scratch, ignore_errors=True)
    scratch.mkdir(parents=True)
    failures = []

    def tarn(*words, text=None):
        given = text.encode() if text is not None else b""
        return subprocess.run([runner, tool, *words], input=given, capture_output=True, timeout=120).stdout.decode()

    def expect(what, made, wanted):
        if made != wanted:
            failures.append(what)
            print(f"{what}:\n  {made[:200]!r}\n  {wanted[:200]!r}")

    rng = random.Random(62)
    texts = ["".join(rng.choices(ALPHABET, k=rng.randrange(12))) for _ in range(10_000)]
    text = CUT.join(texts)

    # Node reads what is for scripts.
    (scratch / "text").write_bytes(text.encode())
    for name, words in {"js": ["js"], "wide": ["query", "-encode", "-wide"],
                        "reduced": ["query", "-encode", "-reduced"]}.items():
        (scratch / name).write_bytes(tarn(*words, text=text).encode())
    node = subprocess.run(["node", "-e", EVALUATE, scratch], capture_output=True, text=True, timeout=120)
    expect("node", node.stdout + node.stderr, "compared\n")
    for one in texts[:100]:
        expect("vbs", evaluate_vbscript(tarn("vbs", text=one)), one.replace("\r\n", "\r"))

    # "-" and "~" are escaped here, and not there.
    quoted = urllib.parse.quote_plus(text, safe="")
    expect("encode", tarn("query", "-encode", text=text), quoted.replace("-", "%2D").replace("~", "%7E"))
    expect("decode", tarn("query", "-decode", text=quoted), text)
    for codeset, encoding in {"2": "cp1252", "3": "cp932", "5": "iso8859-15"}.items():
        known = "".join(c for c in ALPHABET if c.encode(encoding, "ignore") and ord(c) > 126) + "a b\\"
        made = tarn("query", "-encode", "-codeset", codeset, text=known)
        expect(encoding, urllib.parse.unquote_plus(made, encoding=encoding), known)
        expect(encoding + " back", tarn("query", "-decode", "-codeset", codeset, text=made), known)

    # The apostrophe stays here.
    expect("html", tarn("html", text=text), html.escape(text).replace("&#x27;", "'"))

    # The last of several equal names counts, whatever their case; they come in order of their length.
    for _ in range(40):
        pairs = [("".join(rng.choices("abAB é&=", k=rng.randrange(1, 4))), "".join(rng.choices("ab &=%é😀", k=3)))
                 for _ in range(rng.randrange(1, 6))]
        query = urllib.parse.urlencode(pairs)
        read = {name.lower(): value for name, value in urllib.parse.parse_qsl(query, keep_blank_values=True)}
        made = tarn("url", "-kind", "object", "-parse", "x?" + query).split("\n")[1:-2]
        expect(query, sorted(line.lower() for line in made), sorted(f"  {n} = {v}".lower() for n, v in read.items()))

    # A fragment is no part of its own here.
    for url in ["http://user@host:80/a/b;c?x=1&y=/?", "a://b/?", "x://s/a b?é"]:
        parts = urllib.parse.urlsplit(url)
        made = dict(line.split(":", 1) for line in tarn("url", "-parse", url).splitlines())
        expect(url, [made[name].strip() for name in ("protocol", "server", "path", "query")],
               [parts.scheme, parts.netloc, parts.path[1:], parts.query])
    print(f"{len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
