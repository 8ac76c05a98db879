"""What arrived in a mail server's folder, as Python's email package reads it."""
import email
import email.policy
import time

from case import fill

PATIENCE = 30  # seconds for a delivery


def wait_for(root, count):
    """The messages; a server delivers some time after it said yes."""
    deadline = time.monotonic() + PATIENCE
    while len(paths := list((root / "new").glob("*"))) < count and time.monotonic() < deadline:
        time.sleep(0.02)
    return [path.read_bytes() for path in paths]


def plain(content):
    """With line feeds alone, which is what some servers store."""
    return content.replace(b"\r\n", b"\n")


def contents(message):
    """The name of each part and what is in it; the text has its type for a name."""
    for part in message.iter_parts():
        is_text = part.get_filename() is None
        content = part.get_payload(decode=True)
        yield (part.get_content_type(), plain(content)) if is_text else (part.get_filename(), content)


def faults(case, folder, values, letters):
    """A line "letter WHAT TEXT" is true of every message."""
    for letter in letters:
        message = email.message_from_bytes(letter, policy=email.policy.default)
        defects = message.defects + [defect for part in message.walk() for defect in part.defects]
        found = {name: [content] for name, content in contents(message)}
        wrong = [f"defects: {defects}"] if defects else []
        for what, _, text in (text.partition(" ") for text in case.all("letter")):
            text = fill(text, values).decode()
            if what == "part":
                name, _, file = text.rpartition(" ")
                content = (folder / file).read_bytes()
                if found.get(name) != [plain(content) if "/" in name else content]:
                    wrong.append(f"no part {text}, but {list(found)}")
            elif str(message[what.replace("_", "-")] or "") != text:
                wrong.append(f"{what} is {message[what]}, not {text}")
        yield from (f"{case.place}: {fault}" for fault in wrong)
