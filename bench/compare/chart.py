"""Bars as an SVG picture, in colours that can be read on white and on black."""
from xml.sax.saxutils import escape

WIDTH, LEFT, RIGHT, BAR, GAP, TITLE = 720, 190, 90, 16, 6, 30
OURS, OTHERS = "#2f6fb0", "#9a9a9a"


def bars(title, rows, top):
    """One group of bars: the longest fills the width."""
    longest = max(seconds for _, seconds in rows)
    yield f'<text x="0" y="{top + 18}" font-weight="bold">{escape(title)}</text>'
    top += TITLE
    for name, seconds in sorted(rows, key=lambda row: row[1]):
        length = max(1.0, (WIDTH - LEFT - RIGHT) * seconds / longest)
        colour = OURS if name.startswith("krcontacts") else OTHERS
        yield f'<text x="{LEFT - 8}" y="{top + BAR - 4}" text-anchor="end">{escape(name)}</text>'
        yield f'<rect x="{LEFT}" y="{top}" width="{length:.1f}" height="{BAR}" fill="{colour}"/>'
        yield f'<text x="{LEFT + length + 6:.1f}" y="{top + BAR - 4}">{seconds:.3f} s</text>'
        top += BAR + GAP


def drawn(groups):
    """The picture of pairs of a title and (name, seconds) rows."""
    shapes, top = [], 0
    for title, rows in groups:
        shapes.extend(bars(title, rows, top))
        top += TITLE + len(rows) * (BAR + GAP) + GAP
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {top}" width="{WIDTH}" height="{top}" '
            'font-family="sans-serif" font-size="12" fill="#777">\n' + "\n".join(shapes) + "\n</svg>\n")
