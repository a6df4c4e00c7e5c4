"""Plots of the figures as SVG, readable on light and dark pages."""
import math
import statistics
from html import escape

STYLE = '''<style>
.page{fill:#ffffff}text{fill:#1f2328;font:11px system-ui,sans-serif}.title{font-weight:600}
.soft{fill:#59636e}.grid{stroke:#d8dee4;stroke-width:1}.line{fill:none;stroke-width:1.5}
.own{stroke-width:2.8}.leader{stroke-dasharray:2 3}.ring{fill:none;stroke:#59636e;stroke-width:1.5}
.mark{stroke:#1f2328;stroke-width:2}
.s0{stroke:#0550ae;fill:#0550ae}.s1{stroke:#bc4c00;fill:#bc4c00}.s2{stroke:#1a7f37;fill:#1a7f37}
.s3{stroke:#8250df;fill:#8250df}.s4{stroke:#6e7781;fill:#6e7781}.line{fill:none}text{stroke:none}
@media (prefers-color-scheme:dark){.page{fill:#0d1117}text{fill:#e6edf3}.soft{fill:#9198a1}
.grid{stroke:#30363d}.ring{stroke:#9198a1}.mark{stroke:#e6edf3}
.s0{stroke:#6cb6ff;fill:#6cb6ff}.s1{stroke:#f69d50;fill:#f69d50}.s2{stroke:#57ab5a;fill:#57ab5a}
.s3{stroke:#c297ff;fill:#c297ff}.s4{stroke:#9198a1;fill:#9198a1}.line{fill:none}}
</style>'''


def text(x, y, words, style='', anchor='start'):
    return (f'<text x="{x:.1f}" y="{y:.1f}" class="{style}" text-anchor="{anchor}">'
            f'{escape(words)}</text>')


def line(x1, y1, x2, y2, style):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" class="{style}"/>'


def document(width, height, parts):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
            f'width="{width}" height="{height}">{STYLE}'
            f'<rect class="page" width="{width}" height="{height}"/>\n' + '\n'.join(parts)
            + '\n</svg>\n')


class Axis:
    """A logarithmic one, from pixel `begin` to pixel `end`."""

    def __init__(self, values, begin, end):
        self.low, self.high = math.log10(min(values)), math.log10(max(values))
        self.begin, self.scale = begin, (end - begin) / ((self.high - self.low) or 1)

    def at(self, value):
        """What lies below the axis, as an exponent of 0 does, is put at its begin."""
        return self.begin + (max(math.log10(max(value, 1e-9)), self.low) - self.low) * self.scale

    def ticks(self, steps):
        decades = range(math.floor(self.low), math.ceil(self.high) + 1)
        return [step * 10.0 ** d for d in decades for step in steps
                if self.low - 1e-9 <= math.log10(step * 10.0 ** d) <= self.high + 1e-9]


def time_name(nanoseconds):
    for unit, scale in (('s', 1e9), ('ms', 1e6), ('µs', 1e3), ('ns', 1)):
        if nanoseconds >= scale:
            return f'{nanoseconds / scale:g} {unit}'
    return f'{nanoseconds:g} ns'


def apart(places, least):
    """The wanted places of labels, moved until none covers another."""
    order = sorted(range(len(places)), key=lambda i: places[i])
    moved = list(places)
    for before, after in zip(order, order[1:]):
        moved[after] = max(moved[after], moved[before] + least)
    shift = sum(m - p for m, p in zip(moved, places)) / len(places)
    return [place - shift for place in moved]


def panel(left, top, title, series):
    """One plot of growth; `series` is [(name, style, [(n, nanoseconds)])]."""
    x0, x1, y0, y1 = left + 52, left + 232, top + 30, top + 180
    points = [point for _, _, line_points in series for point in line_points]
    low, high = min(y for _, y in points), max(y for _, y in points)
    x = Axis([n for n, _ in points], x0, x1)
    y = Axis([low / 1.3, max(high * 1.3, low * 12)], y1, y0)
    parts = [text(left + 8, top + 16, title, 'title')]
    for tick in x.ticks([1]):
        parts += [line(x.at(tick), y0, x.at(tick), y1, 'grid'),
                  text(x.at(tick), y1 + 15, f'1e{math.log10(tick):.0f}', 'soft', 'middle')]
    for tick in y.ticks([1, 2, 5] if y.high - y.low < 1.7 else [1]):
        parts += [line(x0, y.at(tick), x1, y.at(tick), 'grid'),
                  text(x0 - 5, y.at(tick) + 4, time_name(tick), 'soft', 'end')]
    parts.append(text((x0 + x1) / 2, y1 + 29, 'values in the store', 'soft', 'middle'))
    for name, style, ends in reversed(series):
        path = ' '.join(f'{x.at(n):.1f},{y.at(value):.1f}' for n, value in ends)
        own = ' own' if name == 'ltlib' else ''
        parts.append(f'<polyline points="{path}" class="line {style}{own}"/>')
        parts += [f'<circle cx="{x.at(n):.1f}" cy="{y.at(value):.1f}" r="{3 if own else 2}" '
                  f'class="{style}"/>' for n, value in ends]
    places = apart([y.at(ends[-1][1]) for _, _, ends in series], 12)
    for (name, style, ends), place in zip(series, places):
        n, value = ends[-1]
        if x.at(n) < x1:
            parts.append(line(x.at(n), y.at(value), x1 + 9, place, f'{style} leader'))
        parts.append(f'<g class="{style}"><circle cx="{x1 + 9}" cy="{place:.1f}" r="3"/></g>')
        parts.append(text(x1 + 16, place + 4, name, 'title' if name == 'ltlib' else ''))
    return parts


PANEL_WIDTH, PANEL_HEIGHT, COLUMNS = 325, 222, 3


def growth(panels):
    """`panels` is [(title, series)]."""
    parts = []
    for i, (title, series) in enumerate(panels):
        parts += panel(PANEL_WIDTH * (i % COLUMNS), 6 + PANEL_HEIGHT * (i // COLUMNS), title,
                       series)
    height = 6 + PANEL_HEIGHT * math.ceil(len(panels) / COLUMNS)
    return document(PANEL_WIDTH * COLUMNS, height, parts)


def ratios(entries):
    """A line for each (name, before, goal, at least, now); left is faster than the peer."""
    left, right, top, step = 365, 845, 58, 19
    bottom = top + step * len(entries)
    numbers = [value for _, before, goal, _, now in entries for value in (before, goal, now)
               if value]
    x = Axis([max(min(numbers) / 1.2, 0.02), max(numbers) * 1.2], left, right)
    parts = [text(left, 18, 'Time of ltlib in that of its peer, or as the line says', 'title')]
    legend = [('ring', 'before'), ('s2', 'now, goal met'), ('s1', 'now, goal missed')]
    for i, (style, words) in enumerate(legend):
        parts += [f'<circle cx="{left + 6 + 125 * i}" cy="33" r="4.5" class="{style}"/>',
                  text(left + 16 + 125 * i, 37, words)]
    parts += [line(left + 386, 27, left + 386, 39, 'mark'), text(left + 394, 37, 'goal')]
    for tick in x.ticks([1, 2, 5]):
        parts += [line(x.at(tick), top - 6, x.at(tick), bottom, 'grid'),
                  text(x.at(tick), bottom + 15, f'{tick:g}', 'soft', 'middle')]
    for i, (name, before, goal, least, now) in enumerate(entries):
        y = top + step * i + step / 2 - 4
        met = now is not None and (now >= goal if least else now <= goal)
        style = 's2' if met else 's1'
        parts.append(text(left - 10, y + 4, name + (' (at least)' if least else ''), '', 'end'))
        if before and now:
            parts.append(line(x.at(before), y, x.at(now), y, f'line {style}'))
        if before:
            parts.append(f'<circle cx="{x.at(before):.1f}" cy="{y:.1f}" r="4.5" class="ring"/>')
        parts.append(line(x.at(goal), y - 7, x.at(goal), y + 7, 'mark'))
        if now:
            parts += [f'<circle cx="{x.at(now):.1f}" cy="{y:.1f}" r="4.5" class="{style}"/>',
                      text(right + 12, y + 4, f'{now:.3g}')]
    return document(right + 60, bottom + 26, parts)


SERIES = [('ltlib', 'ltlib'), ('glib', 'GLib'), ('rapidjson', 'RapidJSON'),
          ('ptree_info', 'PropertyTree'), ('qsettings', 'QSettings')]
PANELS = [('load, deep', 'deep', 'load', 'load'), ('load, wide', 'wide', 'load', 'load'),
          ('load, siblings', 'siblings', 'load', 'load'), ('read, deep', 'deep', 'read', 'read'),
          ('set, deep', 'deep', 'set', 'set'), ('insert, deep', 'deep', 'insert', 'insert'),
          ('delete, deep', 'deep', 'remove', 'remove'),
          ('delete a key among siblings', 'siblings', 'remove_keys', 'remove_keys'),
          ('enumerate values, wide', 'wide', 'walk_values', 'walk_values'),
          ('enumerate sub-keys, siblings', 'siblings', 'walk_keys', 'walk_keys')]


def growth_panels(figures):
    """From the medians of all store figures; the time of one value or operation."""
    panels = []
    for title, shape, work, field in PANELS:
        series = []
        for i, (peer, name) in enumerate(SERIES):
            ends = sorted((child[3], statistics.median(values.values()))
                          for (child, f), values in figures.values.items()
                          if child[0] == 'store' and child[1:3] == (peer, shape)
                          and child[4] == work and f == field)
            if len(ends) > 1:
                series.append((name, f's{i}', ends))
        if series:
            panels.append((title, series))
    return panels
