"""The table: what is measured, beside whom, and what is to be reached.

"before" is the ratio before the work on speed began, and "goal" what that work aims at; None where
there is none. Numbers of the table that are no upper limits say so by their kind.
"""
import math
import statistics

STORE_PEERS = ('glib', 'qsettings', 'ptree_info', 'rapidjson')
TREES = ('ptree_info', 'rapidjson')
SIZE_NAMES = {1000: '1e3', 10000: '1e4', 100000: '1e5', 500000: '5e5', 1000000: '1e6'}


def store(peer, shape, count, work, field=None):
    return ('store', peer, shape, count, work), field or work


def gbench(program, name):
    """What is measured among other numbers of classes has a process of its own."""
    own = name if name.startswith('registrar') or name.endswith('100000>') else ''
    return ('gbench', program, own), name


class Row:
    """A line of the table. `ours` over the best of `peers` is its ratio."""
    kind = 'at most'
    rounds = 99

    def __init__(self, group, work, size, ours, peers=(), goal=None, before=None):
        self.group, self.work, self.size = group, work, size
        self.ours, self.peers, self.goal, self.before = ours, list(peers), goal, before
        if any(len(child) > 3 and child[0] == 'store' and child[3] > 100000
               for child, _ in self.figures()):
            self.rounds = 3

    def name(self):
        return ', '.join(text for text in (self.work, self.size) if text)

    def figures(self):
        return [self.ours] + self.peers

    def best(self, figures):
        there = [peer for peer in self.peers if figures.median(peer) is not None]
        return min(there, key=figures.median) if there else None

    def ratio(self, ours, best):
        return ours / best

    def ratios(self, figures):
        """One for each round that has both."""
        best = self.best(figures)
        ours = figures.values.get(self.ours, {})
        if best is None:
            return []
        peer = figures.values[best]
        return [self.ratio(ours[n], peer[n]) for n in sorted(ours) if n in peer]

    def failure(self, figures):
        if figures.median(self.ours) is None:
            return figures.failures.get(self.ours[0], 'not measured')
        return 'no peer' if self.peers and self.best(figures) is None else None

    def met(self, ratio):
        return None if self.goal is None else ratio <= self.goal


class AtLeast(Row):
    """The throughput of threads, in that of one of them."""
    kind = 'at least'

    def ratio(self, ours, best):
        return best / ours

    def met(self, ratio):
        return None if self.goal is None else ratio >= self.goal


class Without(Row):
    """A part of ours does not count."""

    def __init__(self, part, *arguments, **named):
        self.part = part
        super().__init__(*arguments, **named)

    def figures(self):
        return super().figures() + [self.part]

    def ratios(self, figures):
        part, ours = figures.values.get(self.part, {}), figures.values.get(self.ours, {})
        peer = figures.values.get(self.peers[0], {})
        return [(ours[n] - part[n]) / peer[n] for n in ours if n in part and n in peer]


class Exponent(Row):
    """How the time of all grows with the size: the slope between the sizes on two logarithms.
    `more` is 1 where the figures are of each of n, which all are done."""
    kind = 'exponent'

    def __init__(self, group, work, sizes, figure_of, more, goal, before):
        self.sizes, self.figure_of, self.more = sizes, figure_of, more
        super().__init__(group, f'exponent: {work}',
                         f'{SIZE_NAMES[sizes[0]]} to {SIZE_NAMES[sizes[-1]]}',
                         figure_of(sizes[-1]), goal=goal, before=before)

    def figures(self):
        return [self.figure_of(size) for size in self.sizes]

    def ratios(self, figures):
        series = [(size, figures.values[self.figure_of(size)]) for size in self.sizes
                  if self.figure_of(size) in figures.values]
        if len(series) < 2:
            return []
        rounds = [n for n in series[0][1] if all(n in values for _, values in series)]
        return [self.more + slope([(math.log(size), math.log(values[n]))
                                   for size, values in series]) for n in rounds]


class Plain(Row):
    """A figure that nothing is compared with."""
    kind = 'plain'

    def ratios(self, figures):
        return []


def slope(points):
    x, y = (statistics.mean(values) for values in zip(*points))
    return sum((a - x) * (b - y) for a, b in points) / sum((a - x) ** 2 for a, _ in points)


def store_rows(large):
    sizes = [1000, 10000, 100000] + ([1000000] if large else [])
    rows = []

    def add(work, shape, count, goal=None, before=None, peers=('glib',), field=None, title=None,
            child=None):
        child = child or work
        rows.append(Row('store', title or work, f'{shape}, {SIZE_NAMES[count]}',
                        store('ltlib', shape, count, child, field),
                        [store(peer, shape, count, child, field) for peer in peers], goal, before))

    loads = {'deep': (0.40, {1000: 0.78, 10000: 0.58, 100000: 0.61, 1000000: 0.42}),
             'wide': (0.45, {1000: 1.2, 100000: 0.37}),
             'siblings': (0.40, {1000: 0.53, 100000: 0.31})}
    for shape, (goal, before) in loads.items():
        for count in sizes:
            add('load', shape, count, 0.40 if count == 1000000 else goal, before.get(count),
                title='load, of GLib')
        rows.append(Exponent('store', f'load, {shape}', sizes,
                             lambda n, shape=shape: store('ltlib', shape, n, 'load'), 1, 1.1,
                             1.02 if shape == 'deep' else None))
    for shape in loads:
        add('load', shape, 100000, field='load_and_look',
            title='load and 1,000 first look-ups, of GLib')
    add('load', 'deep', 100000, field='process',
        title='load, with the start of the process, of GLib')
    add('load_warm', 'deep', 100000, field='load', title='load into pages it has, of GLib')
    for count in sizes:
        peers = STORE_PEERS + ('ptree_ini',) if count <= 100000 else ('glib', 'rapidjson')
        add('load', 'deep', count, peers=peers, title='load, of the best')
    befores = {10000: (3.2, 2.5, 1.5, 1.1, 1.15), 100000: (3.0, 4.7, 2.0, 1.65, 1.75)}
    for count in sizes:
        read, change, insert, remove, by_object = befores.get(count, (None,) * 5)
        goals = (0.7, 0.9, 1.0, 1.0) if count in befores else (None,) * 4
        all_peers = STORE_PEERS if count <= 100000 else ('glib', 'rapidjson')
        add('read', 'deep', count, goals[0], read, TREES, title='read, of the best tree')
        add('set', 'deep', count, goals[1], change, all_peers, title='set, of the best')
        add('insert', 'deep', count, goals[2], insert, title='insert, of GLib')
        add('remove', 'deep', count, goals[3], remove, title='delete, of GLib')
        if count in befores:
            by_objects = ('ltlib', 'deep', count, 'read_by_object')
            rows.append(Without(store(*by_objects, 'expand_path'), 'store',
                                'CQSRegValue less the expansion, of read',
                                f'deep, {SIZE_NAMES[count]}', store(*by_objects),
                                [store(*by_objects, 'read')], 1.2, by_object))
    for where, two, before in (('same', 1.7, 1.0), ('roots', 1.9, None)):
        for threads, goal in ((2, two), (4, None)):
            rows.append(AtLeast('store', f'read by {threads} threads on '
                                + ('one root' if where == 'same' else 'different roots'),
                                'deep, 1e5',
                                store('ltlib', 'deep', 100000, 'threads', f'{where}{threads}'),
                                [store('ltlib', 'deep', 100000, 'threads', f'{where}1')], goal,
                                before if threads == 2 else None))
    removals = [1000, 10000, 100000]
    for work, before in (('remove_keys', 1.1), ('remove_keys_from_last', None)):
        title = 'delete among n siblings' + (', from the last' if 'last' in work else '')
        rows.append(Exponent('store', title, removals + ([500000] if large else []),
                             lambda n, work=work: store('ltlib', 'siblings', n, work), 0, 0.2,
                             before))
        for count in (1000, 10000):
            add(work, 'siblings', count, peers=('glib', 'ptree_info'),
                title=title + ', of the best')
    for work, shape, title, before in (('walk_values', 'wide', 'enumerate values', (18.7, 2.3)),
                                       ('walk_keys', 'siblings', 'enumerate sub-keys',
                                        (2.3, 0.87))):
        add(work, shape, 1000, peers=STORE_PEERS, title=title + ', of the best')
        for count in (10000, 100000):
            add(work, shape, count, 2.0, before[0], STORE_PEERS, title=title + ', of the best')
            add(work, shape, count, 0.5, before[1], title=title + ', of GLib')
        rows.append(Exponent('store', title, sizes,
                             lambda n, shape=shape, work=work: store('ltlib', shape, n, work), 1,
                             1.05, 1.4 if work == 'walk_keys' else None))
    rows.append(Exponent('store', 'delete recursively, by depth', [1000, 10000],
                         lambda n: store('ltlib', 'chain', n, 'remove_branch'), 0, None, 1.85))
    for shape in loads:
        add('save', shape, 100000, 0.4, 0.9 if shape == 'deep' else None, title='save, of GLib')
        add('save', shape, 100000, 2.2, 7.6 if shape == 'deep' else None, peers=('bytes',),
            title='save, of writing the bytes')
    if large:
        for field in ('memory', 'peak'):
            add('load', 'deep', 1000000, 0.8 if field == 'memory' else None,
                0.85 if field == 'memory' else None, field=field,
                title=f'{field} for each value, of GLib')
    return rows


def small_rows():
    rows = []

    def add(group, work, program, ours, peers, goal=None, before=None, size='', kind=Row):
        rows.append(kind(group, work, size, gbench(program, ours),
                         [gbench(program, peer) for peer in peers], goal, before))

    for shape, goal, before in (('flat', 0.35, {1000: 0.42, 1000000: 0.63}),
                                ('nested', 0.30, {1000: 0.69}), ('again', 0.30, {1000000: 0.27})):
        for count in (1000, 10000, 100000, 1000000):
            name = 'nested, repeated' if shape == 'again' else shape
            add('variables', f'expand {name}, of POCO', 'variables_bench',
                f'expand<Library, {shape}Source>/{count}',
                [f'expand<PocoConfiguration, {shape}Source>/{count}'], goal, before.get(count),
                SIZE_NAMES[count])
    for peer, name in (('PocoConfiguration', 'POCO'), ('Absl', 'absl')):
        add('variables', f'expand three variables, of {name}', 'variables_bench',
            'expand<Library, fewSource>/100000', [f'expand<{peer}, fewSource>/100000'], size='1e5')

    program = 'foundation_bench'
    two = '/real_time/threads:2'
    reentrant = ['std::recursive_mutex', 'PthreadMutex', 'GLibMutex', 'QRecursiveMutex']
    read_write = ['std::shared_mutex', 'PthreadRWLock', 'GLibRWLock', 'QtRWLock']
    for work, pair, own, peers, end, goal, before in (
            ('Mutex pair, of std::recursive_mutex', 'lockPairBesideAThread', 'LTLib::Mutex',
             reentrant[:1], '', 0.7, 0.88),
            ('Mutex pair, of the best', 'lockPairBesideAThread', 'LTLib::Mutex', reentrant, '',
             0.7, None),
            ('Mutex pair, the only thread', 'lockPair', 'LTLib::Mutex', reentrant, '', None, None),
            ('Mutex pair, two threads', 'lockPair', 'LTLib::Mutex', reentrant, two, 1.1, 1.2),
            ('Mutex pair, of the best of any kind', 'lockPairBesideAThread', 'LTLib::Mutex',
             reentrant + ['std::mutex', 'QMutex'], '', None, None),
            ('RWLock read, of the best', 'readPair', 'OwnRWLock', read_write, '', 1.0, 1.07),
            ('RWLock read, two readers', 'readPair', 'OwnRWLock', read_write, two, 1.0, 1.4),
            ('RWLock write, of the best', 'lockPair', 'OwnRWLock', read_write, '', 1.0, 0.92),
            ('NamedMutex free, of flock', 'lockPair', 'OwnNamedMutex', ['Flock'], '', 3.0, 5.4),
            ('NamedMutex, two processes, of flock', 'lockPairInTwoProcesses', 'OwnNamedMutex',
             ['Flock'], '/iterations:1/repeats:3/manual_time', 1.5, 5.7),
            ('NamedMutex free, of Boost', 'lockPair', 'OwnNamedMutex', ['BoostNamedMutex'], '',
             None, None)):
        add('foundation', work, program, f'{pair}<{own}>{end}',
            [f'{pair}<{peer}>{end}' for peer in peers], goal, before)
    add('foundation', 'ltDoOnce when done, of a static', program, 'onceByLibrary',
        ['onceByStatic'], 1.1, 2.1)
    add('foundation', 'ltDoOnce when done, of std::call_once', program, 'onceByLibrary',
        ['onceByCallOnce'])
    for work, peer, goal, before in (('make', 'Boost', 0.1, 0.11), ('print', 'Libuuid', 0.6, 12),
                                     ('parse', 'Libuuid', 0.8, 1.4)):
        add('foundation', f'UID {work}, of {"libuuid" if peer == "Libuuid" else peer}', program,
            f'{work}Identifier<OwnIdentifier>', [f'{work}Identifier<{peer}Identifier>'], goal,
            before)

    program = 'component_bench'
    many = '100000'
    for work, peer, goal, before, size in (
            ('POCO', 'PocoClassLoader, kPeerClasses', 0.6, 0.79, '1e3'),
            ('GObject', 'GObjectTypes, kPeerClasses', None, None, '1e3'),
            ('a bare map', 'BareHash, kPeerClasses', 1.7, 2.8, '1e3')):
        add('component', f'create and release, of {work}', program,
            'instanceAmong<Library, kPeerClasses>', [f'instanceAmong<{peer}>'], goal, before, size)
    add('component', 'create and release, two threads, of POCO', program,
        f'instanceAmong<Library, kPeerClasses>{two}',
        [f'instanceAmong<PocoClassLoader, kPeerClasses>{two}'], size='1e3')
    add('component', 'create and release, of that among 1e3', program,
        f'instanceAmong<Library, {many}>', ['instanceAmong<Library, kPeerClasses>'], 1.5, None,
        '1e5')
    add('component', 'create and release, of a bare map', program,
        f'instanceAmong<Library, {many}>', [f'instanceAmong<BareHash, {many}>'], size='1e5')
    add('component', 'a registrar, of one among 1e3', program, f'registrarAmong<{many}>',
        ['registrarAmong<kPeerClasses>'], 1.5, 5.0, '1e5')
    rows.append(Row('component', 'first load, of dlopen', '',
                    (('first_load', 'ltlib'), 'first_load'),
                    [(('first_load', 'dlopen'), 'first_load')], 1.0, 0.97))
    for work, operation, goal in (('get<int>, of CQSRegValue', 'readNumber', 1.15),
                                  ('get<std::string>, of CQSRegValue', 'readText', 1.15),
                                  ('create, of iqs_CoCreateInstance', 'create', 1.1)):
        add('face', work, 'face_bench', f'{operation}<Face>', [f'{operation}<Plain>'], goal)
    rows.append(Row('process', 'start with the library, of one without', '',
                    (('start', 'start_linked'), 'cpu'), [(('start', 'start_plain'), 'cpu')], 1.02,
                    None))
    rows.append(Row('process', 'start with the library, of one with two empty ones', '',
                    (('start', 'start_linked'), 'cpu'), [(('start', 'start_empty'), 'cpu')], 1.02,
                    1.03))
    return rows


def tool_rows():
    """Every work of the tool; `peers` are left out where they have no such work."""
    rows = []
    for work in ('get', 'list', 'tree', 'find', 'set', 'delete', 'delete a key', 'copy', 'rename',
                 'export', 'import', 'diff', 'merge', 'batch', 'explain', 'recover', 'query', 'add',
                 'check', 'path', 'expand', 'vars', 'component list', 'manual', 'completion',
                 'help'):
        peers = [peer for peer, works in TOOL_PEERS.items() if work in works]
        for peer in peers or [None]:
            kind = Row if peer else Plain
            row = kind('ltreg', f'ltreg {work}' + (f', of {peer}' if peer else ''), 'real tree',
                       (('tool', 'ltreg', work), 'cpu'),
                       [(('tool', peer, work), 'cpu')] if peer else [])
            row.rounds = 5
            rows.append(row)
    return rows


TOOL_PEERS = {
    'crudini': ('get', 'list', 'tree', 'set', 'delete', 'delete a key'),
    'git': ('get', 'list', 'tree', 'find', 'set', 'delete', 'delete a key', 'rename'),
}


def all_rows(large):
    """The lines of one work stand together."""
    rows = store_rows(large) + small_rows() + tool_rows()
    works = list(dict.fromkeys(row.work for row in rows))
    return sorted(rows, key=lambda row: works.index(row.work))
