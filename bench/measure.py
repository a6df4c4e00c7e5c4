"""Runs the programs of the benchmarks as children and takes their figures.

A figure is named (child, field): a child is a tuple of a kind and its arguments, and one run of it
gives several fields. A child that fails gives none, and says why.
"""
import json
import os
import random
import shutil
import statistics
import subprocess
import tempfile
import time

import tool

TIMEOUT = 25  # seconds for one child
LITTLE = 1000  # the most values where everything runs once


class Failure(Exception):
    """Why there is no figure, in a few words."""


class Runner:
    def __init__(self, programs, folder, once=False):
        self.programs = programs
        self.folder = folder
        self.once = once
        self.filters = {}  # of each child with Google Benchmark, what the rows ask it for
        self.prepared = {}
        self.ran = set()
        self.tools = None
        os.makedirs(folder, exist_ok=True)
        # No program touches a store of the user.
        self.environment = dict(os.environ)
        for root in ('LOCAL_MACHINE', 'CURRENT_USER', 'USERS', 'CURRENT_CONFIG', 'CLASSES_ROOT'):
            self.environment['HKEY_' + root] = os.path.join(folder, 'HKEY_' + root + '.cfg')

    def path(self, program):
        return os.path.join(self.programs, program)

    def run(self, child):
        """The fields of one run."""
        if self.once:
            child = tuple(min(part, LITTLE) if isinstance(part, int) else part for part in child)
            if child in self.ran:
                return {}
            self.ran.add(child)
        return getattr(self, 'run_' + child[0])(*child[1:])

    def call(self, command, timeout=TIMEOUT):
        if not os.path.exists(command[0]):
            raise Failure(os.path.basename(command[0]) + ' is not built')
        try:
            done = subprocess.run(command, capture_output=True, text=True, timeout=timeout,
                                  cwd=self.folder, env=self.environment, check=False)
        except subprocess.TimeoutExpired:
            raise Failure(f'does not end in {timeout} s') from None
        if done.returncode == 2:
            raise Failure('absent')
        if done.returncode != 0:
            raise Failure((done.stderr.strip().splitlines() or ['no message'])[-1][:80])
        return done.stdout

    def run_store(self, peer, shape, count, work):
        program = self.path('store_bench')
        data = (peer, shape, count)
        command = [program, peer, shape, str(count), self.folder]
        if data not in self.prepared:
            try:
                self.call(command + ['prepare'], 120)
                self.prepared[data] = None
            except Failure as failure:
                self.prepared[data] = failure
        if self.prepared[data]:
            raise self.prepared[data]
        return fields(self.call(command + [work] + ['--once'] * self.once))

    def run_gbench(self, program, own):
        names = [name for name in sorted(self.filters['gbench', program, own])
                 if not (self.once and '00000' in name)]
        if not names:
            return {}
        text = self.call([self.path(program), f'--benchmark_filter=^({"|".join(names)})$',
                          '--benchmark_format=json',
                          '--benchmark_min_time=' + ('0.0001' if self.once else '0.03')], 120)
        found = {}
        for run in json.loads(text)['benchmarks']:
            if run['run_type'] == 'iteration':
                real = run['name'].endswith('manual_time') or '/real_time' in run['name']
                found.setdefault(run['name'], []).append(run['real_time' if real else 'cpu_time'])
        return {name: statistics.median(times) for name, times in found.items()}

    def run_first_load(self, way):
        copies = [os.path.join(self.folder, f'first_load_{i}.so') for i in range(20)]
        for copy in copies:
            if not os.path.exists(copy):
                shutil.copy(self.path('component_bench_library.so'), copy)
        return fields(self.call([self.path('first_load_bench'), way] + copies))

    def run_start(self, program):
        if not os.path.exists(self.path(program)):
            raise Failure(program + ' is not built')
        runs = 2 if self.once else 60
        return {'cpu': statistics.median(
            tool.process(self.path('process_bench'), [self.path(program)],
                         self.environment)['cpu'] for _ in range(runs))}

    def run_tool(self, name, verb):
        if self.tools is None:
            if os.path.exists(os.path.join(self.folder, 'tool')):
                raise Failure('the tree was not made')
            self.tools = tool.Tools(self.path('process_bench'), self.path('ltreg'), self.folder,
                                    self.environment, self.once)
        try:
            return self.tools.run(name, verb)
        except tool.Missing as missing:
            raise Failure(str(missing)) from None


def fields(text):
    return {name: float(number) for name, number in (line.split() for line in text.splitlines())}


class Figures:
    """What the rounds brought: values[(child, field)] is a list with one entry for each round."""

    def __init__(self):
        self.values = {}
        self.failures = {}

    def run_round(self, runner, children, number):
        for child in children:
            try:
                found = runner.run(child)
            except Exception as failure:  # whatever it is, the others go on
                self.failures[child] = str(failure) or type(failure).__name__
                continue
            for field, value in found.items():
                self.values.setdefault((child, field), {})[number] = value

    def median(self, figure):
        values = self.values.get(figure)
        return statistics.median(values.values()) if values else None


def measure(runner, rows, rounds, seconds, progress):
    """Runs the children of the rows in rounds: ours next to its peers, the rows in another order
    each time. No round begins that would end after that many seconds."""
    figures = Figures()
    begin = time.monotonic()
    for row in rows:
        for child, field in row.figures():
            if child[0] == 'gbench':
                runner.filters.setdefault(child, set()).add(field)
    order = random.Random(1)
    longest = 0
    for number in range(rounds):
        if number > 0 and time.monotonic() - begin + longest > seconds:
            break
        round_begin = time.monotonic()
        shuffled = list(rows)
        order.shuffle(shuffled)
        children = {}
        for row in shuffled:
            if number < row.rounds:
                mixed = [child for child, _ in row.figures()]
                order.shuffle(mixed)
                children.update(dict.fromkeys(mixed))
        # What did not end or is absent would not be otherwise the next time.
        figures.run_round(runner, [c for c in children if c not in figures.failures], number)
        longest = max(longest, time.monotonic() - round_begin)
        progress(f'round {number + 1} took {time.monotonic() - round_begin:.0f} s')
    return figures


def data_folder(parent):
    os.makedirs(parent, exist_ok=True)
    return tempfile.mkdtemp(prefix='data-', dir=parent)
