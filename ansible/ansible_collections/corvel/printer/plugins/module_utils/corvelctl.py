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

    def run(self, args, printer=None, secret=None):
        """One run on one printer (or no printer: the one attached, or none
        for list). The secret goes to standard input, never the command line."""
        command = [self.path, '--json']
        if self.timeout is not None:
            command += ['--timeout', str(self.timeout)]
        if printer is not None:
            command += ['--printer', printer]
        command += list(args)
        if secret is not None:
            command.append('--passphrase-stdin')
            rc, stdout, stderr = self.module.run_command(command, data=secret, binary_data=True)
        else:
            rc, stdout, stderr = self.module.run_command(command)
        return parse_answer(rc, stdout, stderr, printer)

    def list_printers(self):
        return self.run(['list'])['printers']

    def run_on_printers(self, selectors, args, secret=None):
        """Runs one command on several printers; returns, in the order given,
        (selector, answer, error) for each, exactly one of answer and error
        being None.

        This is the one place to switch to corvelctl's several-printer form
        (repeated --printer, a JSON array) once it exists: until then, one
        corvelctl run per printer."""
        results = []
        for selector in selectors:
            try:
                results.append((selector, self.run(args, selector, secret), None))
            except CorvelctlError as error:
                results.append((selector, None, error))
        return results

    def resolve(self, selectors):
        """The printers a module works on: those named, else every attached
        one, as (selector, listing) where listing is `corvelctl list`."""
        listing = self.list_printers()
        if selectors:
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
