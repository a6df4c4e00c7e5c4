#!/usr/bin/env python3
"""Measures the library beside its peers in interleaved rounds and prints one table of ratios.

Each store and each change is a process of its own. Times are processor time unless the row says
otherwise; a ratio is the median of the rounds' ratios.
"""
import argparse
import json
import os
import re
import shutil
import sys

import measure
import report
import rows as table
import tool


def arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('programs', help='folder of the built programs')
    parser.add_argument('filter', nargs='?', help='regular expression for the rows, by their names')
    parser.add_argument('--quick', action='store_true',
                        help='fewer rounds, and nothing beyond 100,000 values')
    parser.add_argument('--once', action='store_true',
                        help='run everything once on little data, to see whether it runs')
    parser.add_argument('--write', metavar='FILE',
                        help='write the figures into the blocks of this page, and plots beside it')
    return parser.parse_intermixed_args()


def progress(text):
    print(text, file=sys.stderr, flush=True)


def main():
    options = arguments()
    rows = table.all_rows(large=not (options.quick or options.once))
    if options.filter:
        rows = [row for row in rows
                if re.search(options.filter, f'{row.group}: {row.name()}')]
    if not rows:
        sys.exit('no row has such a name')
    if options.write and (options.filter or not os.path.exists(options.write)):
        sys.exit('a page that is there is written with all lines')
    programs = os.path.abspath(options.programs)
    folder = measure.data_folder(os.path.join(os.path.dirname(programs), 'bench-data'))
    rounds, seconds = (1, 0) if options.once else (3, 150) if options.quick else (7, 720)
    try:
        runner = measure.Runner(programs, folder, options.once)
        figures = measure.measure(runner, rows, rounds, seconds, progress)
        tree = runner.tools
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    if not options.once:
        print(report.as_text(rows, figures))
    for verb in tool.verbs_of(os.path.join(programs, 'ltreg')):
        if not options.filter and not any(row.work.startswith('ltreg ' + verb) for row in rows):
            print(f'ltreg {verb} is not measured')
    own = {row.ours[0] for row in rows}
    failures = {child: why for child, why in figures.failures.items()
                if not why.endswith('is not built') and (child in own or why != 'absent')}
    for child, why in failures.items():
        print(f'{" ".join(map(str, child))}: {why}')
    if options.write:
        report.write(options.write, rows, figures, tree)
    sys.exit(1 if options.once and failures else 0)


if __name__ == '__main__':
    main()
