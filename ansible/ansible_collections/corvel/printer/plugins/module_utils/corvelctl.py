# -*- coding: utf-8 -*-
# Copyright (c) 2026 the corvelcfg developers
# MIT License (see LICENSE in the collection)

"""The one place that runs corvelctl: its command line, its JSON answer and
its exit statuses, for every module of the collection."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json

# corvelctl's exit statuses (sysexits.h), named in failure messages so that a
# playbook's reader sees what kind of trouble it was.
EXIT_MEANINGS = {
    1: 'the printer refused',
    64: 'usage error',
    65: 'bad input data',
    66: 'input file missing or unreadable',
    69: 'printer unavailable',
    73: 'cannot create output file',
    74: 'I/O error',
    75: 'no answer within the deadline',
    76: 'malformed answer',
    77: 'permission denied',
}


class CorvelctlError(Exception):
    """corvelctl failed: its message, its exit status and what it printed."""

    def __init__(self, message, exit_status, printer=None):
        super(CorvelctlError, self).__init__(message)
        self.message = message
        self.exit_status = exit_status
        self.printer = printer

    def describe(self):
        meaning = EXIT_MEANINGS.get(self.exit_status, 'unexpected exit status')
        where = '%s: ' % self.printer if self.printer else ''
        return 'corvelctl: %s%s (exit %d, %s)' % (where, self.message, self.exit_status, meaning)


def parse_answer(rc, stdout, stderr, printer=None):
    """Returns the JSON object corvelctl printed on success; raises
    CorvelctlError with corvelctl's own message otherwise."""
    try:
        answer = json.loads(stdout) if stdout.strip() else None
    except ValueError:
        answer = None
    if rc == 0:
        if not isinstance(answer, dict):
            raise CorvelctlError('printed no JSON object: %r' % stdout[:200], rc, printer)
        return answer
    if isinstance(answer, dict) and 'error' in answer:
        raise CorvelctlError(answer['error'], answer.get('exit', rc), printer)
    # Killed, or failed before it could write JSON: its standard error says why.
    message = stderr.strip().splitlines()[-1] if stderr.strip() else 'failed without a message'
    if message.startswith('corvelctl: '):
        message = message[len('corvelctl: '):]
    raise CorvelctlError(message, rc, printer)


def split_several(selectors, rc, stdout, stderr):
    """(selector, answer, error) for each printer of a several-printer run:
    its JSON array holds one element per printer in the order named, a failed
    one's with "error" and "exit". None when the array does not match the
    printers named (corvelctl runs a printer named twice, such as lp0 and
    /dev/usb/lp0, once), for the caller to run them one by one. Raises
    CorvelctlError when the run failed as a whole (one error object)."""
    try:
        answer = json.loads(stdout) if stdout.strip() else None
    except ValueError:
        answer = None
    if not isinstance(answer, list):
        if rc != 0:
            parse_answer(rc, stdout, stderr)  # raises with corvelctl's message
        raise CorvelctlError('printed no JSON array: %r' % stdout[:200], rc)
    if len(answer) != len(selectors):
        return None
    results = []
    for selector, element in zip(selectors, answer):
        if 'error' in element:
            results.append((selector, None, CorvelctlError(element['error'], element.get('exit', rc), selector)))
        else:
            results.append((selector, element, None))
    return results


def selector_of(listed):
    """The --printer selector naming one printer of `corvelctl list`:
    its serial when it has one (stable across re-plugging), else its node or
    bus:device."""
    if listed.get('serial'):
        return 'serial:%s' % listed['serial']
    return listed.get('node') or listed['bus_device']


def listed_printer_named(listing, printer):
    """The entry of `corvelctl list` whose node or bus:device is the
    `printer` field of a command's answer; None when none is."""
    for listed in listing:
        if printer in (listed.get('node'), listed.get('bus_device')):
            return listed
    return None


class Corvelctl(object):
    """Runs corvelctl --json on the managed host through the module."""

    def __init__(self, module, timeout=None):
        self.module = module
        self.path = module.get_bin_path('corvelctl', required=True)
        self.timeout = timeout
        self._several = None

    def run(self, args, printer=None, secret=None):
        """One run on one printer (or no printer: the one attached, or none
        for list). The secret goes to standard input, never the command line."""
        rc, stdout, stderr = self._invoke([] if printer is None else [printer], args, secret)
        return parse_answer(rc, stdout, stderr, printer)

    def _invoke(self, selectors, args, secret):
        """Runs corvelctl --json on the printers named (none: its own choice);
        returns (rc, stdout, stderr)."""
        command = [self.path, '--json']
        if self.timeout is not None:
            command += ['--timeout', str(self.timeout)]
        for selector in selectors:
            command += ['--printer', selector]
        command += list(args)
        if secret is None:
            return self.module.run_command(command)
        command.append('--passphrase-stdin')
        return self.module.run_command(command, data=secret, binary_data=True)

    def list_printers(self):
        return self.run(['list'])['printers']

    def several_printers_supported(self):
        """Whether this corvelctl runs one command on several printers
        (repeated --printer, --all): asked once, by `list --all`, which such
        a corvelctl takes and an older one refuses as a usage error. Talks
        to no printer."""
        if self._several is None:
            rc, _, _ = self.module.run_command([self.path, '--json', '--all', 'list'])
            self._several = rc == 0
        return self._several

    def run_on_printers(self, selectors, args, secret=None):
        """Runs one command on several printers; returns, in the order given,
        (selector, answer, error) for each, exactly one of answer and error
        being None.

        The one place that chooses how: corvelctl's several-printer form (one
        run, repeated --printer, a JSON array) where corvelctl has it, else
        one run per printer."""
        if len(selectors) > 1 and self.several_printers_supported():
            results = self._run_several(selectors, args, secret)
            if results is not None:
                return results
        results = []
        for selector in selectors:
            try:
                results.append((selector, self.run(args, selector, secret), None))
            except CorvelctlError as error:
                results.append((selector, None, error))
        return results

    def _run_several(self, selectors, args, secret):
        rc, stdout, stderr = self._invoke(selectors, args, secret)
        try:
            return split_several(selectors, rc, stdout, stderr)
        except CorvelctlError as error:
            # Failed before any printer was talked to: the same for each.
            return [(selector, None, error) for selector in selectors]

    def resolve(self, selectors):
        """The printers a module works on: those named, else every attached
        one, as (selector, listing) where listing is `corvelctl list`."""
        listing = self.list_printers()
        if selectors is not None:
            return list(dict.fromkeys(selectors)), listing
        if not listing:
            raise CorvelctlError('no printer is attached', 69)
        return [selector_of(listed) for listed in listing], listing


def find_listed(listing, selector, answer):
    """The entry of `corvelctl list` for the printer a command ran on: by the
    path its answer names, else by the serial its selector names; {} when
    neither is found (the printer went away)."""
    listed = listed_printer_named(listing, answer.get('printer')) if answer else None
    if listed is None and selector.startswith('serial:'):
        serial = selector[len('serial:'):]
        listed = next((candidate for candidate in listing if candidate.get('serial') == serial), None)
    return listed or {}


def identity(listing, selector, answer):
    """Selector, serial, node and bus:device of the printer a command ran on."""
    listed = find_listed(listing, selector, answer)
    return {
        'selector': selector,
        'serial': listed.get('serial'),
        'node': listed.get('node'),
        'bus_device': listed.get('bus_device'),
    }


def failure_summary(errors):
    """One message for the printers that failed."""
    return '; '.join(error.describe() for error in errors)
