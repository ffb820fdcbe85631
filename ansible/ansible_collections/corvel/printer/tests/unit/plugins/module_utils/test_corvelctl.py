# -*- coding: utf-8 -*-
# Copyright (c) 2026 the corvelcfg developers
# MIT License (see LICENSE in the collection)

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json
import unittest

from ansible_collections.corvel.printer.plugins.module_utils.corvelctl import (
    Corvelctl, CorvelctlError, parse_answer, split_several)


class ParseAnswerTest(unittest.TestCase):
    def test_success_is_the_printed_object(self):
        self.assertEqual(parse_answer(0, '{"printer": "/dev/usb/lp0", "reset": true}\n', ''),
                         {'printer': '/dev/usb/lp0', 'reset': True})

    def test_failures_carry_corvelctls_message_and_status(self):
        cases = [
            # rc, stdout, stderr, message, exit status
            (69, '{"error": "no printer is attached", "exit": 69}', 'corvelctl: no printer is attached\n',
             'no printer is attached', 69),
            (1, '{"error": "the printer did not accept the settings", "exit": 1}', '',
             'the printer did not accept the settings', 1),
            # Killed before it wrote JSON: the last line of standard error, without the program's name.
            (137, '', 'trace\ncorvelctl: the printer went away\n', 'the printer went away', 137),
            (75, 'not json', '', 'failed without a message', 75),
            # A zero status without a JSON object is no success.
            (0, '', '', "printed no JSON object: ''", 0),
            (0, '[1]', '', "printed no JSON object: '[1]'", 0),
        ]
        for rc, stdout, stderr, message, status in cases:
            with self.assertRaises(CorvelctlError) as raised:
                parse_answer(rc, stdout, stderr, 'lp0')
            self.assertEqual((raised.exception.message, raised.exception.exit_status), (message, status))

    def test_description_names_the_printer_and_what_the_status_means(self):
        error = CorvelctlError('busy', 69, 'serial:CVSIM0002')
        self.assertEqual(error.describe(), 'corvelctl: serial:CVSIM0002: busy (exit 69, printer unavailable)')
        self.assertIn('no answer within the deadline', CorvelctlError('late', 75).describe())


class SplitSeveralTest(unittest.TestCase):
    def test_each_element_belongs_to_the_printer_named_in_its_place(self):
        array = [{'printer': '/dev/usb/lp0', 'serial': 'A', 'ssid': 'Office'},
                 {'printer': '/dev/usb/lp1', 'serial': 'B', 'error': 'no answer within 5 s', 'exit': 75}]
        results = split_several(['lp0', 'lp1'], 75, json.dumps(array), '')
        self.assertEqual(results[0], ('lp0', array[0], None))
        self.assertEqual((results[1][0], results[1][1]), ('lp1', None))
        self.assertEqual((results[1][2].message, results[1][2].exit_status), ('no answer within 5 s', 75))

    def test_a_printer_named_twice_leaves_the_split_to_the_caller(self):
        self.assertIsNone(split_several(['lp0', '/dev/usb/lp0'], 0, '[{"printer": "/dev/usb/lp0"}]', ''))

    def test_a_failure_before_any_printer_fails_the_whole_run(self):
        for rc, stdout, message in [(64, '{"error": "--ssid is missing", "exit": 64}', '--ssid is missing'),
                                    (0, '{"printer": "/dev/usb/lp0"}', "printed no JSON array: '{\"printer\": \"/dev/usb/lp0\"}'")]:
            with self.assertRaises(CorvelctlError) as raised:
                split_several(['lp0', 'lp1'], rc, stdout, '')
            self.assertEqual(raised.exception.message, message)


class FakeModule(object):
    """Answers run_command from a table keyed by the --printer value; with
    `several`, a corvelctl that takes --all and repeated --printer."""

    def __init__(self, answers, several=False):
        self.answers = answers
        self.several = several
        self.calls = []

    def get_bin_path(self, name, required=False):
        return '/usr/bin/' + name

    def run_command(self, args, data=None, binary_data=False):
        self.calls.append((args, data))
        if '--all' in args:
            return (0, '{"printers": []}', '') if self.several else (64, '{"error": "unknown option", "exit": 64}', '')
        printers = [args[index + 1] for index, arg in enumerate(args) if arg == '--printer']
        if len(printers) > 1:
            elements = [dict(self.answers[printer][1], printer=printer) for printer in printers]
            return max(self.answers[printer][0] for printer in printers), json.dumps(elements), ''
        rc, answer = self.answers[printers[0] if printers else None]
        return rc, json.dumps(answer), ''


class RunnerTest(unittest.TestCase):
    def test_the_secret_goes_to_standard_input_only(self):
        module = FakeModule({'lp0': (0, {'printer': '/dev/usb/lp0', 'accepted': True})})
        Corvelctl(module, timeout=2.5).run(['wifi', '--ssid', 'Office'], 'lp0', secret='correct horse')
        args, data = module.calls[0]
        self.assertEqual(args, ['/usr/bin/corvelctl', '--json', '--timeout', '2.5', '--printer', 'lp0',
                                'wifi', '--ssid', 'Office', '--passphrase-stdin'])
        self.assertEqual(data, 'correct horse')

    def test_each_printer_answers_or_fails_on_its_own(self):
        answers = {
            'lp0': (0, {'printer': '/dev/usb/lp0', 'ssid': 'Office'}),
            'lp1': (75, {'error': 'no answer', 'exit': 75}),
        }
        # An older corvelctl: one run per printer; a newer one: one run for both.
        for several, runs in ((False, 2), (True, 1)):
            module = FakeModule(answers, several)
            results = Corvelctl(module).run_on_printers(['lp0', 'lp1'], ['wifi'], secret='s3cret-pass')
            self.assertEqual([(selector, answer is None, error is None) for selector, answer, error in results],
                             [('lp0', False, True), ('lp1', True, False)])
            self.assertEqual(results[1][2].exit_status, 75)
            printer_runs = [(args, data) for args, data in module.calls if '--all' not in args]
            self.assertEqual(len(printer_runs), runs, several)
            self.assertTrue(all(data == 's3cret-pass' and 's3cret-pass' not in args for args, data in printer_runs))

    def test_all_attached_are_named_by_serial_else_by_node(self):
        listing = [{'node': '/dev/usb/lp0', 'bus_device': '001:002', 'serial': 'CVSIM0001'},
                   {'node': None, 'bus_device': '001:003', 'serial': None},
                   {'node': '/dev/usb/lp2', 'bus_device': '001:004', 'serial': ''}]
        module = FakeModule({None: (0, {'printers': listing})})
        selectors, _ = Corvelctl(module).resolve(None)
        self.assertEqual(selectors, ['serial:CVSIM0001', '001:003', '/dev/usb/lp2'])

    def test_all_attached_with_none_attached_is_printer_unavailable(self):
        module = FakeModule({None: (0, {'printers': []})})
        with self.assertRaises(CorvelctlError) as raised:
            Corvelctl(module).resolve(None)
        self.assertEqual(raised.exception.exit_status, 69)


if __name__ == '__main__':
    unittest.main()
