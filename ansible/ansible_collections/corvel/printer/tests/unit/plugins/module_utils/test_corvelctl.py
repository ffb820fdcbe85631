# -*- coding: utf-8 -*-
# Copyright (c) 2026 the corvelcfg developers
# MIT License (see LICENSE in the collection)

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json
import unittest

from ansible_collections.corvel.printer.plugins.module_utils.corvelctl import (
    Corvelctl, CorvelctlError, parse_answer)


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


class FakeModule(object):
    """Answers run_command from a table keyed by the --printer value."""

    def __init__(self, answers):
        self.answers = answers
        self.calls = []

    def get_bin_path(self, name, required=False):
        return '/usr/bin/' + name

    def run_command(self, args, data=None, binary_data=False):
        self.calls.append((args, data))
        printer = args[args.index('--printer') + 1] if '--printer' in args else None
        rc, answer = self.answers[printer]
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
        module = FakeModule({
            'lp0': (0, {'printer': '/dev/usb/lp0', 'ssid': 'Office'}),
            'lp1': (75, {'error': 'no answer', 'exit': 75}),
        })
        results = Corvelctl(module).run_on_printers(['lp0', 'lp1'], ['status'])
        self.assertEqual([(selector, answer is None, error is None) for selector, answer, error in results],
                         [('lp0', False, True), ('lp1', True, False)])
        self.assertEqual(results[1][2].exit_status, 75)

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
