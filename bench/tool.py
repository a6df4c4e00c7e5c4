"""The tool on a real tree, beside tools for other formats on the same data: whole processes."""
import os
import re
import shutil
import subprocess

ROOT = 'HKLM'
TIMEOUT = 90  # seconds for one process


class Missing(Exception):
    """A tool, or a work that it does not have."""


def process(launcher, command, environment, cwd=None):
    """Seconds that passed, seconds of processor time, and bytes at the peak, of one process."""
    done = subprocess.run([launcher] + command, capture_output=True, text=True, env=environment,
                          cwd=cwd, timeout=TIMEOUT, check=True)
    return {name: float(number)
            for name, number in (line.split() for line in done.stdout.splitlines())}


def sections(store):
    """(path, [(name, value)]) for each key of a store file; values that go on in further lines end
    with their first."""
    found = []
    with open(store, encoding='latin-1') as lines:
        for line in lines:
            header = re.match(r'\[(.*)\]', line)
            value = re.match(r'"([^"]*)"=(\w+):(.*)', line)
            if header:
                found.append((header[1], []))
            elif value:
                found[-1][1].append((value[1], value[3].strip('"')))
    return [(path, values) for path, values in found if values]


def printable(text, but=''):
    return ''.join(c for c in text if ' ' <= c <= '~' and c not in '"\\' + but)


def generated_reg(path, keys):
    """A tree with the shape of a real one: many small keys at several depths."""
    with open(path, 'w', encoding='utf-8') as out:
        out.write('Windows Registry Editor Version 5.00\n')
        for i in range(keys):
            out.write(f'\n[HKEY_LOCAL_MACHINE\\Software\\Classes\\Group {i % 70}\\'
                      f'{{{i * 7919:032X}}}\\InprocServer]\n')
            for j in range(3):
                out.write(f'"Value {j}"="the text number {i * 3 + j} of the tree"\n')


class Tools:
    """The stores of all tools, with the works that each of them has."""

    def __init__(self, launcher, ltreg, folder, environment, once):
        self.launcher = launcher
        self.ltreg = ltreg
        self.folder = os.path.join(folder, 'tool')
        self.environment = environment
        os.makedirs(self.folder)
        self.store = self.file('real.cfg')
        self.make_store(once)
        tree = sections(self.store)
        self.count = sum(len(values) for _, values in tree)
        self.path, values = next((p, v) for p, v in tree[len(tree) // 2:]
                                 if re.fullmatch(r'[\w\\{}. -]+', p) and p.count('\\') > 1)
        self.name = values[0][0]
        with open(self.file('batch'), 'w', encoding='utf-8') as out:
            out.writelines(f"set 'HKLM\\{self.path}' 'Number {i}' {i}\n" for i in range(1000))
        self.write_crudini(tree)
        self.write_git(tree)
        self.works = {'ltreg': self.of_ltreg(), 'crudini': self.of_crudini(), 'git': self.of_git()}

    def file(self, name):
        return os.path.join(self.folder, name)

    def make_store(self, once):
        self.reg = self.file('real.reg')
        wine = shutil.which('wine')
        if wine and not once:
            home = dict(self.environment, WINEPREFIX=self.file('wine'), WINEDEBUG='-all',
                        WINEDLLOVERRIDES='winemenubuilder.exe=d;mscoree,mshtml=')
            home.pop('DISPLAY', None)
            process(self.launcher, [wine, 'reg', 'export', 'HKLM\\Software', 'real.reg', '/y'],
                    home, self.folder)
            subprocess.run(['wineserver', '--kill'], env=home, check=False)
            shutil.rmtree(self.file('wine'), ignore_errors=True)
        self.real = os.path.exists(self.reg)
        if not self.real:
            generated_reg(self.reg, 100 if once else 7000)
        made = process(self.launcher,
                       [self.ltreg, 'import', self.reg, '--lossy', '--store', self.store],
                       self.environment, self.folder)
        if made['status'] not in (0, 3) or not os.path.exists(self.store):
            raise Missing('the tree cannot be imported')
        # The text of the store, which has all that a store can hold.
        with open(self.reg, 'wb') as out:
            subprocess.run([self.ltreg, 'export', 'HKLM\\Software', '--store', self.store],
                           stdout=out, env=self.environment, check=True)

    def write_crudini(self, tree):
        with open(self.file('real.ini'), 'w', encoding='utf-8') as out:
            for path, values in tree:
                out.write(f'[{printable(path, "[]")}]\n'.replace('\\', '/'))
                for i, (_, text) in enumerate(values):
                    out.write(f'v{i} = {printable(text)}\n')

    def write_git(self, tree):
        with open(self.file('real.gitconfig'), 'w', encoding='utf-8') as out:
            for path, values in tree:
                out.write('[k "{}"]\n'.format(path.encode('ascii', 'ignore').decode().replace(
                    '\\', '/').replace('"', '')))
                for i, (_, text) in enumerate(values):
                    out.write(f'\tv{i} = "{printable(text)}"\n')

    # Of each work the command on the file "work".
    def of_ltreg(self):
        key, store = f'{ROOT}\\{self.path}', ['--store', 'work']
        text = ['the new text']
        return {
            'get': ['get', key, self.name] + store,
            'list': ['list', key] + store,
            'tree': ['tree', ROOT + '\\Software'] + store,
            'find': ['find', ROOT, 'needle in the tree'] + store,
            'set': ['set', key, 'A new name'] + text + store,
            'delete': ['delete', key, self.name] + store,
            'delete a key': ['delete', '-r', key] + store,
            'copy': ['copy', key, key + ' copied'] + store,
            'rename': ['rename', key, 'renamed'] + store,
            'export': ['export', ROOT + '\\Software'] + store,
            'import': ['import', self.reg, '--lossy'] + store,
            'diff': ['diff', 'work', self.store],
            'merge': ['merge', '-o', 'merged', self.store, 'work', self.store],
            'batch': ['batch', self.file('batch')] + store,
            'explain': ['explain', key, self.name] + store,
            'recover': ['recover', ROOT] + store,
            'query': ['query', key] + store,
            'add': ['add', key, 'A new name'] + text + store,
            'check': ['check'] + store,
            'path': ['path', ROOT],
            'expand': ['expand', '%SharedRoot%'] + store,
            'vars': ['vars'] + store,
            'component list': ['component', 'list'] + store,
            'manual': ['manual'],
            'completion': ['completion', 'bash'],
            'help': ['help'],
        }

    def of_crudini(self):
        key = self.path.replace('\\', '/')
        return {
            'get': ['--get', 'work', key, 'v0'],
            'list': ['--get', 'work', key],
            'tree': ['--get', '--format=lines', 'work'],
            'set': ['--set', 'work', key, 'A new name', 'the new text'],
            'delete': ['--del', 'work', key, 'v0'],
            'delete a key': ['--del', 'work', key],
        }

    def of_git(self):
        key = 'k.' + self.path.replace('\\', '/')
        config = ['config', '--file', 'work']
        return {
            'get': config + ['--get', key + '.v0'],
            'list': config + ['--get-regexp', '^' + re.escape(key) + '\\.'],
            'tree': config + ['--list'],
            'find': config + ['--get-regexp', '.', 'needle in the tree'],
            'set': config + [key + '.new-name', 'the new text'],
            'delete': config + ['--unset', key + '.v0'],
            'delete a key': config + ['--remove-section', key],
            'rename': config + ['--rename-section', key, 'k.renamed'],
        }

    def run(self, tool, work):
        program = self.ltreg if tool == 'ltreg' else shutil.which(tool)
        if not program or work not in self.works[tool]:
            raise Missing('absent')
        original = {'ltreg': 'real.cfg', 'crudini': 'real.ini', 'git': 'real.gitconfig'}[tool]
        shutil.copy(self.file(original), self.file('work'))
        done = process(self.launcher, [program] + self.works[tool][work], self.environment,
                       self.folder)
        if done.pop('status') not in (0, 1):
            raise Missing(f'{tool} {work} fails')
        return done


def verbs_of(ltreg):
    """The verbs that the tool's own help lists."""
    text = subprocess.run([ltreg, 'help'], capture_output=True, text=True, check=False).stdout
    listed = text.partition('Subcommands:')[2].partition('\n\n')[0]
    return re.findall(r'^  (\w+)', listed, re.MULTILINE)
