"""A chart of ratios by family, on a logarithmic axis, as SVG that reads well on light and dark pages."""
import math
from xml.sax.saxutils import escape

LABELS, PLOT, MARGIN, LINE, TOP, DOT, LEGEND = 190, 560, 24, 18, 56, 4.5, 95  # widths and heights in pixels
MOST_TICKS = 14

STYLE = """
text { font: 12px system-ui, sans-serif; fill: #24292f }
.title { font-size: 14px; font-weight: 600 }
.page { fill: #ffffff } .band { fill: #f6f8fa } .grid { stroke: #d0d7de } .even { stroke: #57606a; stroke-width: 1.5 }
.ahead { fill: #1a7f5a } .level { fill: #6e7781 } .behind { fill: #cf5a00 }
@media (prefers-color-scheme: dark) {
  text { fill: #d5dbe2 }
  .page { fill: #0d1117 } .band { fill: #161b22 } .grid { stroke: #30363d } .even { stroke: #9aa4af }
  .ahead { fill: #4cc38a } .level { fill: #8b949e } .behind { fill: #ff9e4a }
}
"""


def ticks(ratios):
    """The marks of an axis that holds all ratios and 1: by 1, 2 and 5, or by tens where that would be too many."""
    low, high = min([0.5, *ratios]), max([2.0, *ratios])
    for steps in ((1, 2, 5), (1,)):
        marks = [float(f"{step}e{power}") for power in range(-4, 6) for step in steps]
        first = max([mark for mark in marks if mark <= low], default=marks[0])
        last = min([mark for mark in marks if mark >= high], default=marks[-1])
        marks = [mark for mark in marks if first <= mark <= last]
        if len(marks) <= MOST_TICKS:
            break
    return marks


def dot(x, y, ratio, level, note):
    """A diamond where we are behind, so that colour is not all that tells; a dot otherwise."""
    title = f"<title>{escape(note)}</title>"
    if round(ratio, 2) < level:
        points = " ".join(f"{x + dx:.1f},{y + dy:.1f}" for dx, dy in ((0, -DOT - 1), (DOT + 1, 0), (0, DOT + 1), (-DOT - 1, 0)))
        return f'<polygon class="behind" points="{points}">{title}</polygon>'
    kind = "level" if ratio < 1 / level else "ahead"
    return f'<circle class="{kind}" cx="{x:.1f}" cy="{y:.1f}" r="{DOT}">{title}</circle>'


def legend(x, level):
    for ratio, note in ((level / 2, "behind"), (2 / level, "ahead"), (1, "within a tenth")):
        yield dot(x, 20, ratio, level, note) + f'<text x="{x + 10}" y="24">{note}</text>'
        x += LEGEND


def svg(families, level):
    """families: name -> [(ratio, what it is of)]; level: a ratio below it is behind."""
    marks = ticks([ratio for dots in families.values() for ratio, _ in dots])
    low, high = math.log(marks[0]), math.log(marks[-1])
    width, bottom = LABELS + PLOT + 2 * MARGIN, TOP + LINE * len(families)

    def place(ratio):
        inside = min(max(math.log(ratio), low), high)
        return LABELS + MARGIN + PLOT * (inside - low) / (high - low)

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {bottom + 2 * LINE}" role="img">',
           f"<title>The rival's time or memory over ours, by family</title><style>{STYLE}</style>",
           f'<rect class="page" width="{width}" height="{bottom + 2 * LINE}"/>',
           f'<text class="title" x="{MARGIN}" y="24">The rival\'s time or memory over ours: right of 1 we are ahead</text>',
           *legend(width - MARGIN - 3 * LEGEND, level)]
    for number, name in enumerate(sorted(families)):
        if number % 2 == 0:
            out.append(f'<rect class="band" x="0" y="{TOP + LINE * number}" width="{width}" height="{LINE}"/>')
    for mark in marks:
        x = place(mark)
        out.append(f'<line class="{"even" if mark == 1 else "grid"}" x1="{x:.1f}" x2="{x:.1f}" y1="{TOP}" y2="{bottom}"/>')
        out.extend(f'<text x="{x:.1f}" y="{y}" text-anchor="middle">{mark:g}</text>' for y in (TOP - 6, bottom + 16))
    for number, name in enumerate(sorted(families)):
        y = TOP + LINE * (number + 0.5)
        out.append(f'<text x="{LABELS}" y="{y + 4:.1f}" text-anchor="end">{escape(name)}</text>')
        out.extend(dot(place(ratio), y, ratio, level, note) for ratio, note in sorted(families[name], reverse=True))
    return "\n".join([*out, "</svg>", ""])
