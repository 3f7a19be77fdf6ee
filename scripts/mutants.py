#!/usr/bin/env python3
"""Plants one small fault at a time in the libraries and counts how many the family's tests find.

  mutants.py TREE BUILD COUNT [FAMILY...]    COUNT faults for each family

TREE is a copy that may be changed, BUILD its build. The places are chosen at random with a seed that
stands still, so that the same sources give the same faults. A fault that doesn't compile isn't
counted; one that a test doesn't end with counts as found. Prints each survivor, and the share found.
"""
import os
import random
import re
import signal
import subprocess
import sys
import time

SEED = 20261126

LIBRARY = 'common/kelp/kelp0lang/'
# Takes half a minute where nothing is optimised, and only looks at Sha.
VALUES_TEST = 'values_test:-Sha.BitsAreCountedBeyond32'
# What takes long is asked last.
TIME_SLOW = 'HostLocalTime.AgreesInEveryZoneOfTheDatabaseThisYear:Calendar.AgreesWithChrono'
XML_SLOW = 'XmlDiff.RandomLayoutsComeOutAsByThePlainModel:XmlParser.LongTextsAndManyNamesStayWhole'
# Each family: the test programs, with a filter of their tests behind a colon, and the sources.
FAMILIES = {
    'text': ('core_test', 'String'),
    'utf8': ('core_test:StringUtf8.*', 'common/kelptext/Utf8 common/kelptext/Utf8Dense'),
    'numbers': ('core_test', 'LocaleFree ValueConverter SafeFormat'),
    'legacy': ('core_test', 'LegacyNumber LegacyText LegacyPath LegacyGeometry LegacyFlags'),
    'angles': ('units_test', 'AngleForm FeetInch MeasUnit'),
    'checks': ('units_test', 'ValueCheck ValueScan ValueScanLength ValueScanAngle ValueScanUnit'),
    'measure': ('measure_test', 'MeasUnitSystem MeasUnitText MeasUnitLabel CurrMeasUnitInfo '
                                'MeasUnitChangeContext'),
    'changes': ('changes_test', 'ChangeTransaction CmdExecuted Memento Ptr64Mapper IdRemapper'),
    'values': (VALUES_TEST, 'PolyValue PerPropertySetting BitStream KeyDerivation Des3 Sha'),
    'streams': (VALUES_TEST, 'FileStream LibGen PointRecords'),
    'files': ('files_test', 'File FileSystem MemoryMappedFile'),
    'settings': ('files_test measure_test', 'IniFile WholeFile'),
    'time': (f'time_test:-{TIME_SLOW} time_test:{TIME_SLOW}', 'UtcTime LocalTimeComputer Calendar'),
    'threads': ('threads_test', 'SyncObj ProcessProgress TimeProfiler ReportLog CriticalSec'),
    'pool': ('thread_pool_test plugin_test', 'ThreadFactory'),
    'desktop': ('desktop_test', 'CultureTable SpecialFolder StringLoader Translate TranslateWindow'),
    'singletons': ('singleton_test core_test', 'Singleton GlobalFunction RunOnce'),
    'catalogues': ('desktop_test sarnutils_test',
                   'common/sarnutils/PoCatalogue common/sarnutils/MoCatalogue '
                   'common/sarnutils/Xlate common/sarnutils/Charset'),
    'xml': (f'xml_test:-{XML_SLOW} xml_test:{XML_SLOW}',
            'XmlDiffRules XmlDiffGeneration XmlDiffApplication XmlGeneric XmlWriter'),
    'helper': ('helper_test', 'StubMessage StubCaller PipeManager SystemQuery MonitorInfo'),
}

SWAPS = [(re.compile(pattern), to) for pattern, to in [
    (r'(?<=\s)<(?=\s)', '<='), (r'(?<=\s)>(?=\s)', '>='), (r'<=(?!>)', '<'), (r'(?<![<\->])>=', '>'),
    (r'==', '!='), (r'!=', '=='), (r'&&', '||'), (r'\|\|', '&&'),
    (r'(?<=\s)\+(?=\s)', '-'), (r'(?<=\s)-(?=\s)', '+'), (r'(?<=\s)\*(?=\s)', '/'),
    (r'\+\+', '--'), (r'\btrue\b', 'false'), (r'\bfalse\b', 'true'), (r'\bif \(', 'if (!'),
    (r'(?<![\w.])\d(?![\w.])', None)]]  # a digit becomes the next number
NO_CODE = ('#', 'using', 'namespace', 'template', 'static_assert', 'class', 'struct', 'enum', 'extern')


def source_path(name):
    return (name if '/' in name else LIBRARY + name) + '.cpp'


def places(text):
    """Where a fault can stand: line, first and last column, and what is put there."""
    for number, line in enumerate(text.split('\n')):
        code = line.split('//')[0]
        if not code.strip() or code.lstrip().startswith(NO_CODE):
            continue
        for pattern, to in SWAPS:
            for match in pattern.finditer(code):
                if code[:match.start()].count('"') % 2 == 0:
                    yield number, match.start(), match.end(), to or str(int(match.group()) + 1)


class Family:
    def __init__(self, name, tree, build):
        tests, sources = FAMILIES[name]
        self.name, self.tree, self.build = name, tree, build
        self.tests = [test.partition(':') for test in tests.split()]
        self.sources = [source_path(source) for source in sources.split()]
        self.found, self.survivors = 0, []
        self.limit = None  # seconds that a test program may take

    def compiles(self):
        command = ['cmake', '--build', self.build, '--target', *(test for test, _, _ in self.tests)]
        return subprocess.run(command, capture_output=True).returncode == 0

    def passes(self):
        for test, _, only in self.tests:
            command = [os.path.join(self.build, 'bin', test), '--gtest_brief=1', '--gtest_fail_fast',
                       f'--gtest_filter={only or "*"}']
            try:
                done = subprocess.run(command, capture_output=True, timeout=self.limit, cwd=self.build)
            except subprocess.TimeoutExpired:
                return False
            if done.returncode != 0:
                return False
        return True

    def plant(self, source, place):
        number, begin, end, to = place
        path = os.path.join(self.tree, source)
        with open(path) as file:
            original = file.read()
        lines = original.split('\n')
        before = lines[number]
        lines[number] = before[:begin] + to + before[end:]
        try:
            with open(path, 'w') as file:
                file.write('\n'.join(lines))
            if not self.compiles():
                return
            if not self.passes():
                self.found += 1
                return
            what = f'{source}:{number + 1}: {before.strip()}   ->   {lines[number].strip()}'
            self.survivors.append(what)
            print(f'{self.name}: alive  {what}', flush=True)
        finally:
            with open(path, 'w') as file:
                file.write(original)

    def run(self, count):
        whole = self.compiles()
        begin = time.monotonic()
        if not whole or not self.passes():
            sys.exit(f'{self.name}: its tests have to pass before anything is planted')
        self.limit = 20 + 2 * (time.monotonic() - begin)
        every = []
        for source in self.sources:
            with open(os.path.join(self.tree, source)) as file:
                every += [(source, place) for place in places(file.read())]
        random.Random(f'{SEED} {self.name}').shuffle(every)
        for source, place in every:
            if self.found + len(self.survivors) >= count:
                break
            self.plant(source, place)
        tried = self.found + len(self.survivors)
        print(f'{self.name}: {self.found} of {tried} found', flush=True)
        return tried


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # which mends what is planted
    tree, build, count, *names = sys.argv[1:]
    unknown = [name for name in names if name not in FAMILIES]
    if unknown:
        sys.exit(f'no such family: {" ".join(unknown)}; there are: {" ".join(FAMILIES)}')
    families = [Family(name, tree, build) for name in names or FAMILIES]
    tried = sum(family.run(int(count)) for family in families)
    found = sum(family.found for family in families)
    print(f'in all {found} of {tried} found, {100 * found / max(1, tried):.1f} %')


main()
