"""What the rows of the table are to reach: aims.txt."""
import fnmatch


class Aims:
    def __init__(self, path):
        self.lines = []
        self.used = set()
        for line in path.read_text(encoding="utf-8").splitlines():
            if line.strip() and not line.startswith("#"):
                aim, name = line.split(maxsplit=1)
                what, _, contender = name.partition(" / ")
                self.lines.append((float(aim), what.strip(), contender.strip() or "*"))

    def of(self, what, contender):
        """The aim of a row, or None. The first line that names it holds."""
        for line in self.lines:
            aim, what_pattern, contender_pattern = line
            if fnmatch.fnmatchcase(what, what_pattern) and fnmatch.fnmatchcase(contender, contender_pattern):
                self.used.add(line)
                return aim
        return None

    def unused(self):
        """A complaint for each line that names no row of a whole run."""
        return [f"aims.txt: no row for {what} / {contender}" for line in self.lines if line not in self.used
                for _, what, contender in [line]]
