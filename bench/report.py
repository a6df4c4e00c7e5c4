"""The table of ratios as a text and in the page, with the data and the plots beside it."""
import json
import os
import platform
import re
import statistics
import subprocess

import plots


def number(value):
    if value is None:
        return ''
    return f'{value:.3g}' if value < 1000 else f'{value:.0f}'


def amount(row, figures):
    """Our own figure with its unit."""
    value = figures.median(row.ours)
    if value is None:
        return ''
    child, field = row.ours
    if child[0] in ('start', 'tool'):
        return f'{value * 1000:.3g} ms'
    if field in ('memory', 'peak'):
        return f'{value:.0f} B'
    for unit, scale in (('s', 1e9), ('ms', 1e6), ('µs', 1e3)):
        if value >= scale:
            return f'{value / scale:.3g} {unit}'
    return f'{value:.3g} ns'


def goal(row):
    if row.goal is None:
        return ''
    return ('≥ ' if row.kind == 'at least' else '≤ ') + number(row.goal)


def spread(ratios):
    """The quartiles, or all of a few."""
    if len(ratios) < 2:
        return ''
    low, high = min(ratios), max(ratios)
    if len(ratios) > 3:
        low, _, high = statistics.quantiles(ratios, n=4, method='inclusive')
    return f'{number(low)} to {number(high)}'


PEER_NAMES = {'glib': 'GLib', 'qsettings': 'QSettings', 'ptree_info': 'PropertyTree',
              'ptree_ini': 'PropertyTree INI', 'rapidjson': 'RapidJSON', 'bytes': 'bytes'}


def peer_name(row, figures):
    best = row.best(figures)
    if best is None or len(row.peers) < 2:
        return ''
    child, field = best
    if child[0] == 'store':
        return PEER_NAMES.get(child[1], child[1])
    return field[field.find('<') + 1:field.rfind('>')]


HEADINGS = ('work', 'size', 'ltlib', 'best peer', 'before', 'goal', 'now', 'spread', 'met')


def cells(row, figures):
    ratios = row.ratios(figures)
    failure = row.failure(figures)
    now = statistics.median(ratios) if ratios else None
    met = row.met(now) if ratios else None
    return (row.work, row.size, amount(row, figures), peer_name(row, figures), number(row.before),
            goal(row), failure or number(now), spread(ratios),
            {None: '', True: 'yes', False: 'no'}[met])


def as_text(rows, figures):
    lines = [HEADINGS] + [cells(row, figures) for row in rows]
    widths = [max(len(line[i]) for line in lines) for i in range(len(HEADINGS))]
    return '\n'.join('  '.join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip()
                     for line in lines)


def as_markdown(rows, figures):
    lines = [HEADINGS, ('---',) * len(HEADINGS)] + [cells(row, figures) for row in rows]
    return '\n'.join('| ' + ' | '.join(line) + ' |' for line in lines)


GROUPS = {'store': 'The registry', 'variables': 'Variables', 'foundation': 'Foundation',
          'component': 'Components', 'face': 'Typed settings and components',
          'process': 'Processes'}


def tables(rows, figures):
    parts = []
    for group, title in GROUPS.items():
        part = [row for row in rows if row.group == group]
        if part:
            parts.append(f'### {title}\n\n{as_markdown(part, figures)}')
    return '\n\n'.join(parts)


def tool_table(rows, figures, tree):
    """Processor time, time that passed and memory at the peak, of each work's process."""
    works = dict.fromkeys(row.ours[0][2] for row in rows if row.group == 'ltreg')
    if not works:
        return 'Not measured.'
    lines = ['| work | ltreg | crudini | git config |', '|---|---|---|---|']
    for work in works:
        line = [work]
        for program in ('ltreg', 'crudini', 'git'):
            cpu, wall, peak = (figures.median((('tool', program, work), field))
                               for field in ('cpu', 'wall', 'peak'))
            line.append('' if cpu is None else
                        f'{number(cpu * 1000)} ms, {number(wall * 1000)} ms, '
                        f'{peak / 2**20:.1f} MiB')
        lines.append('| ' + ' | '.join(line) + ' |')
    kind = 'a fresh system\'s own' if tree and tree.real else 'a generated one'
    count = tree.count if tree else 0
    return f'The tree is {kind}, of {count:,} values.\n\n' + '\n'.join(lines)


def machine():
    with open('/proc/cpuinfo', encoding='utf-8') as lines:
        cores = sum(line.startswith('processor') for line in lines)
    with open('/etc/os-release', encoding='utf-8') as lines:
        system = dict(line.rstrip().split('=', 1) for line in lines if '=' in line)
    compiler = subprocess.run(['c++', '--version'], capture_output=True, text=True,
                              check=False).stdout.partition('\n')[0].replace('c++', 'GCC', 1)
    return (f'Measured on a machine with {cores} cores of {platform.machine()}, '
            f'{system.get("PRETTY_NAME", "").strip(chr(34))}, C library '
            f'{platform.libc_ver()[1]}, {compiler}.')


def summary(rows, figures):
    met = [row.met(statistics.median(row.ratios(figures))) for row in rows
           if row.goal is not None and row.ratios(figures)]
    return f'{sum(met)} of {len(met)} lines with a goal reach it.'


def ratio_entries(rows, figures):
    found = []
    for row in rows:
        ratios = row.ratios(figures)
        if row.goal is not None and ratios:
            found.append((row.name(), row.before, row.goal, row.kind == 'at least',
                          statistics.median(ratios)))
    return found


def data(rows, figures):
    """What was measured, for those who compare two runs."""
    return {
        'rows': [dict(zip(HEADINGS, cells(row, figures)), group=row.group) for row in rows],
        'medians': {' '.join(map(str, figure[0] + figure[1:])):
                    float(f'{figures.median(figure):.5g}')
                    for figure in sorted(figures.values, key=str)},
    }


def write(page, rows, figures, tree):
    """Puts the figures into the page's blocks; what stands outside of them stays."""
    folder = os.path.splitext(page)[0]
    os.makedirs(folder, exist_ok=True)

    def put(name, content):
        with open(os.path.join(folder, name), 'w', encoding='utf-8') as out:
            out.write(content)

    put('figures.json', json.dumps(data(rows, figures), indent=1, ensure_ascii=False) + '\n')
    put('growth.svg', plots.growth(plots.growth_panels(figures)))
    put('ratios-registry.svg', plots.ratios(ratio_entries(
        [row for row in rows if row.group == 'store'], figures)))
    put('ratios-others.svg', plots.ratios(ratio_entries(
        [row for row in rows if row.group != 'store'], figures)))
    blocks = {'machine': machine() + ' ' + summary(rows, figures), 'tables': tables(rows, figures),
              'tool': tool_table(rows, figures, tree)}
    with open(page, encoding='utf-8') as source:
        text = source.read()
    lines_by_hand = text.partition('## What is not reached')[2]
    for work in dict.fromkeys(row.work for row in rows if row.ratios(figures)
                              and row.met(statistics.median(row.ratios(figures))) is False):
        if work not in lines_by_hand:
            print(f'{page} has no line yet on what is not reached: {work}')
    for name, content in blocks.items():
        text = re.sub(rf'(<!-- figures: {name} -->\n).*?(\n<!-- end -->)',
                      lambda found, content=content: f'{found[1]}\n{content}\n{found[2]}', text,
                      flags=re.DOTALL)
    with open(page, 'w', encoding='utf-8') as out:
        out.write(text)
