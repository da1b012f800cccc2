#!/usr/bin/env python3
"""Runs the benchmark programs and shows what they measured: as a table, as JSON, as docs/performance.md with charts.

tools/bench.sh calls it; `bench_report.py --from FILE` shows a saved run again.
"""
import argparse
import datetime
import json
import os
import re
import subprocess
import sys

ROW_COLUMNS = ('operation', 'size', 'peer', 'library', 'peer', 'ratio', '10-90 %', 'bar', '', 'of copy bandwidth')
GROWTH_COLUMNS = ('operation', 'exponent', '10-90 %', 'bar', '')

# Programs that run at the same time, on average, from which on the page warns of its own figures.
BUSY = 3

OPENING = """# Performance

For those who ask whether the library is fast enough. Every operation stands beside what one would use instead.
A program measured and wrote all of this page; nothing in it is typed by hand.

%s

## How to read it

- Both sides run in turns in one process, in many short rounds. Before that they are compared: they must give the same.
- **library, peer**: medians of one call. Rows that need no other thread or service count the processor time of their
  thread, the others wall time.
- **ratio**: median of the ratios of all rounds; below 1 the library is the faster one. Beside it the ratios between
  which lie all but the lowest and the highest tenth.
- **bar**: the greatest ratio that is good enough. A row is close where it misses the bar by less than its spread.
- **of copy bandwidth**: how fast memory-bound work reads, beside copying as many bytes.

## The machine
"""


def run_program(command, arguments):
    """The objects that one program prints, as they come."""
    with subprocess.Popen(command.split() + arguments, stdout=subprocess.PIPE, text=True) as process:
        for line in process.stdout:
            yield json.loads(line)
    # 1 says that a row's results differ, which the row says as well.
    if process.returncode not in (0, 1):
        sys.exit(f'{command} ended with {process.returncode}')


def verdict(entry):
    """Whether a row or a growth meets its bar: 'met', 'missed' by more than its spread, or 'close' to it."""
    value = entry['ratio' if entry['kind'] == 'row' else 'exponent']
    if not entry['bar']:
        return 'reported'
    if value <= entry['bar']:
        return 'met'
    return 'missed' if value - entry['bar'] > entry['high'] - entry['low'] else 'close'


def figure(value, unit):
    """Three digits, in a unit that suits."""
    if unit != 'ns':
        return f'{value:,.0f} {unit}'
    for limit, scale, name in ((1e3, 1, 'ns'), (1e6, 1e3, 'us'), (1e9, 1e6, 'ms')):
        if value < limit:
            break
    else:
        scale, name = 1e9, 's'
    return f'{value / scale:.3g} {name}' if value / scale < 999.5 else f'{value / scale:.0f} {name}'


def ratio(value):
    """Two digits behind the point, more where nothing would be left, none where they say nothing."""
    return f'{value:,.0f}' if value >= 100 else f'{value:.2f}' if value >= 0.1 else f'{value:.2g}'


def spread(entry):
    return f"{ratio(entry['low'])} - {ratio(entry['high'])}"


def bar(entry):
    return ratio(entry['bar']) if entry['bar'] else '-'


def row_cells(row):
    if not row['same']:
        return [row['name'], row['size'], row['peer'], 'the results differ'] + [''] * 6
    share = f"{100 * row['share']:.0f} %" if row['share'] else ''
    return [row['name'], row['size'], row['peer'], figure(row['ours'], row['unit']),
            figure(row['theirs'], row['unit']), ratio(row['ratio']), spread(row), bar(row), verdict(row), share]


def growth_cells(growth):
    return [growth['name'], f"{growth['exponent']:.2f}", spread(growth), bar(growth), verdict(growth)]


def families(entries):
    """Families in their order, each with its entries."""
    result = {}
    for entry in entries:
        result.setdefault(entry['family'], []).append(entry)
    return result


class LiveTable:
    """Prints each entry as soon as it is known."""

    WIDTHS = {'row': (40, 24, 42, 9, 9, 7, 15, 6, 9, 6), 'growth': (40, 8, 15, 6, 9)}
    COLUMNS = {'row': ROW_COLUMNS, 'growth': GROWTH_COLUMNS}

    def __init__(self):
        self._below = None

    def show(self, entry):
        kind = entry['kind']
        if kind == 'machine':
            return
        if self._below != (kind, entry['family']):
            self._below = (kind, entry['family'])
            print(f"\n{entry['family']}")
            self._print(kind, self.COLUMNS[kind])
        self._print(kind, row_cells(entry) if kind == 'row' else growth_cells(entry))

    def _print(self, kind, cells):
        print('  '.join(cell.ljust(width) for cell, width in zip(cells, self.WIDTHS[kind])).rstrip(), flush=True)


class Run:
    """All that was measured at once."""

    def __init__(self, entries, date, load):
        self.machine = next((entry for entry in entries if entry['kind'] == 'machine'), {})
        self.rows = [entry for entry in entries if entry['kind'] == 'row']
        self.growths = [entry for entry in entries if entry['kind'] == 'growth']
        self.date = date
        self.load = load

    def same(self):
        return all(row['same'] for row in self.rows)

    def judged(self):
        """What has a verdict."""
        return [row for row in self.rows if row['same']] + self.growths

    def missed(self):
        return [entry for entry in self.judged() if verdict(entry) == 'missed']

    def to_json(self):
        return json.dumps({'date': self.date, 'load': self.load, 'machine': self.machine, 'rows': self.rows,
                           'growth': self.growths}, indent=1)

    @staticmethod
    def from_json(text):
        saved = json.loads(text)
        machine = [saved['machine']] if saved['machine'] else []
        return Run(machine + saved['rows'] + saved['growth'], saved['date'], saved['load'])

    def summary(self):
        verdicts = [verdict(entry) for entry in self.judged()]
        counts = ', '.join(f'{verdicts.count(name)} {name}' for name in ('met', 'close', 'missed', 'reported'))
        return f'{len(verdicts)} lines: {counts}.'


def file_name(family):
    return 'performance-' + re.sub(r'\W+', '-', family.lower()) + '.svg'


def draw_family(path, family, rows):
    """A dot a row with its spread, and its bar beside it."""
    import matplotlib
    matplotlib.use('svg')
    # The same figures give the same file; text stays text.
    matplotlib.rcParams.update({'svg.hashsalt': family, 'svg.fonttype': 'none', 'font.size': 8})
    from matplotlib import pyplot

    places = range(len(rows))
    figure_, axes = pyplot.subplots(figsize=(9, 1.2 + 0.19 * len(rows)))
    met = {'met': '#2a7f3f', 'close': '#c58a00', 'missed': '#b3261e', 'reported': '#5f6368'}
    for place, row in zip(places, rows):
        colour = met[verdict(row)]
        axes.plot([row['low'], row['high']], [place, place], color=colour, linewidth=2)
        axes.plot([row['ratio']], [place], marker='o', markersize=4, color=colour)
        if row['bar']:
            axes.plot([row['bar']], [place], marker='|', markersize=8, color='black')
    axes.axvline(1, color='#9aa0a6', linewidth=0.8)
    axes.set_xscale('log')
    axes.xaxis.set_major_formatter(matplotlib.ticker.FuncFormatter(lambda value, _: f'{value:g}'))
    axes.set_yticks(list(places), [f"{row['name']}, {row['size']} | {row['peer']}" for row in rows])
    axes.set_ylim(len(rows) - 0.5, -0.5)
    axes.set_xlabel('time of the library / time of the peer, with the spread of 10-90 %; the black line is the bar')
    axes.set_title(family, loc='left')
    figure_.savefig(path, format='svg', bbox_inches='tight', metadata={'Date': None, 'Creator': None})
    pyplot.close(figure_)
    with open(path, encoding='utf-8') as file:
        lines = [line.rstrip() for line in file]
    with open(path, 'w', encoding='utf-8', newline='\n') as file:
        file.write('\n'.join(lines) + '\n')


def markdown_table(columns, rows, left):
    """`left` columns hold words, the others figures."""
    lines = ['| ' + ' | '.join(columns) + ' |']
    lines.append('|' + '---|' * left + '---:|' * (len(columns) - left))
    lines += ['| ' + ' | '.join(cells) + ' |' for cells in rows]
    return lines


def code(text):
    """Names of C and C++ as such."""
    return re.sub(r'[\w]+(?:::\w+)+|\b[a-z]+_[a-z_]+\b|operator==', lambda name: f'`{name[0]}`', text)


def losing(entries):
    """Lines that miss their bar, and reported ones that are slower, with the reason beside them in the source."""
    lost = [entry for entry in entries if verdict(entry) in ('close', 'missed')
            or (verdict(entry) == 'reported' and entry['reason'] and entry.get('ratio', 2) > 1)]
    lines = []
    for entry in lost:
        where = f"{entry['name']}, {entry['size']}, beside {entry['peer']}" if entry['kind'] == 'row' else entry['name']
        value = ratio(entry['ratio']) if entry['kind'] == 'row' else f"{entry['exponent']:.2f}"
        wanted = f", bar {bar(entry)}" if entry['bar'] else ''
        lines.append([code(where), value + wanted, code(entry['reason']) or 'none given yet'])
    return markdown_table(('line', 'measured', 'reason'), lines, 3) if lines else ['None.']


def machine_lines(run):
    machine = run.machine
    cells = [('processor', f"{machine['processor']}, {machine['processors']} in use"), ('system', machine['system']),
             ('compiler', f"{machine['compiler']}, `-O3`"), ('library', machine['version']),
             ('clock of threads', machine['threadClock']), ('day of the run', run.date),
             ('load of the machine', f"{run.load:.1f} programs at the start, on average")]
    return markdown_table(('', ''), cells, 2)


def page(run):
    """docs/performance.md."""
    lines = (OPENING % run.summary()).split('\n') + machine_lines(run) + ['']
    if run.load >= BUSY:
        lines += ['**The machine was busy with other work:** measure again on an idle one before you rely on a figure.',
                  '']
    for family, rows in families([row for row in run.rows if row['same']]).items():
        lines += [f'## {family}', '', f'![{family}: ratios]({file_name(family)})', '']
        cells = [[code(cell) for cell in row_cells(row)] for row in rows]
        lines += markdown_table(ROW_COLUMNS, cells, 3) + ['', '**Losing rows, and why:**', '']
        lines += losing(rows) + ['']
    if run.growths:
        lines += growth_section(run)
    return '\n'.join(lines)


def growth_section(run):
    lines = ['## Growth', '',
             'How the cost grows with n: the exponent fitted through the times at 1,024, 2,048 and so on up to 32,768',
             'units or elements. 1 is work in proportion to n.', '']
    cells = [[growth['family']] + [code(cell) for cell in growth_cells(growth)] for growth in run.growths]
    lines += markdown_table(('family',) + GROWTH_COLUMNS, cells, 2)
    return lines + ['', '**What grows faster, and why:**', ''] + losing(run.growths) + ['']


def write_page(run, folder):
    os.makedirs(folder, exist_ok=True)
    for family, rows in families([row for row in run.rows if row['same']]).items():
        draw_family(os.path.join(folder, file_name(family)), family, rows)
    with open(os.path.join(folder, 'performance.md'), 'w', encoding='utf-8', newline='\n') as file:
        file.write(page(run))


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.split('\n')[0])
    parser.add_argument('--from', dest='source', metavar='FILE', help='show this saved run, measure nothing')
    parser.add_argument('--program', action='append', default=[], help='command that measures; once for each')
    parser.add_argument('--argument', action='append', default=[], help='handed on to the programs')
    parser.add_argument('--save', metavar='FILE', help='keep the run in this file')
    parser.add_argument('--json', action='store_true', help='print the run as JSON, no table')
    parser.add_argument('--check', action='store_true', help='fail where a bar is missed by more than the spread')
    parser.add_argument('--page', metavar='FOLDER', help='write performance.md and its charts into this folder')
    return parser.parse_args()


def measure(arguments):
    load = os.getloadavg()[0]
    table = LiveTable()
    entries = []
    for program in arguments.program:
        for entry in run_program(program, arguments.argument):
            entries.append(entry)
            if not arguments.json:
                table.show(entry)
    return Run(entries, datetime.date.today().isoformat(), load)


def show_saved(arguments):
    with open(arguments.source, encoding='utf-8') as file:
        run = Run.from_json(file.read())
    if not arguments.json:
        table = LiveTable()
        for entry in run.rows + run.growths:
            table.show(entry)
    return run


def main():
    arguments = parse_arguments()
    run = show_saved(arguments) if arguments.source else measure(arguments)
    if not run.rows and not run.growths:
        sys.exit('nothing was measured: no line matches the filter')
    if arguments.save:
        with open(arguments.save, 'w', encoding='utf-8') as file:
            file.write(run.to_json() + '\n')
    if arguments.json:
        print(run.to_json())
    else:
        print(f'\n{run.summary()}')
    if arguments.page:
        write_page(run, arguments.page)
    failed = not run.same() or (arguments.check and run.missed())
    sys.exit(1 if failed else 0)


if __name__ == '__main__':
    main()
