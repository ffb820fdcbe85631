# -*- coding: utf-8 -*-
# Copyright (c) 2026 the corvelcfg developers
# MIT License (see LICENSE in the collection)

"""Wi-Fi settings of printer_wifi: checked before anything is sent, turned
into corvelctl's arguments, and compared with what a printer reports."""

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import re

SECURITIES = ['none', 'wep-open', 'wep-shared', 'wpa-wpa2-psk', 'wpa2-psk', '802.1x']
WEP_SECURITIES = ('wep-open', 'wep-shared')
WPA_SECURITIES = ('wpa-wpa2-psk', 'wpa2-psk')
EAP_METHODS = ['md5', 'mschapv2', 'leap', 'peap', 'tls', 'ttls']

HEX = re.compile(r'\A[0-9A-Fa-f]*\Z')
PRINTABLE_ASCII = set(chr(code) for code in range(0x20, 0x7f))


def _byte_length(text):
    return len(text.encode('utf-8'))


def _wpa_problem(passphrase):
    if len(passphrase) == 64 and HEX.match(passphrase):
        return None
    if 8 <= len(passphrase) <= 63 and set(passphrase) <= PRINTABLE_ASCII:
        return None
    return ('the passphrase has %d characters; WPA needs 8-63 printable ASCII characters '
            'or 64 hex digits' % len(passphrase))


def _wep_problems(passphrase, tx_key):
    keys = passphrase.split('\n')
    if not 1 <= len(keys) <= 4:
        return ['WEP takes 1-4 keys, one per line; %d given' % len(keys)]
    problems = []
    for number, key in enumerate(keys, 1):
        if len(key) in (5, 13) or (len(key) in (10, 26) and HEX.match(key)):
            continue
        problems.append('WEP key %d has %d characters; a key is 5 or 13 characters, or 10 or 26 hex digits'
                        % (number, len(key)))
    if tx_key is not None and tx_key > len(keys):
        problems.append('wep_tx_key %d names a key that was not given (%d given)' % (tx_key, len(keys)))
    return problems


def settings_problems(params):
    """What is wrong with printer_wifi's options, as messages; empty when
    corvelctl would take them. Checked before any printer is talked to."""
    problems = []
    security = params['security']
    passphrase = params.get('passphrase')
    ssid = params['ssid']
    if not 1 <= _byte_length(ssid) <= 32:
        problems.append('ssid has %d bytes; it takes 1-32' % _byte_length(ssid))
    channel = params.get('channel')
    if channel is not None and not 1 <= channel <= 11:
        problems.append('channel %d is not 1-11' % channel)
    wait = params.get('wait')
    if wait is not None and not 1 <= wait <= 3600:
        problems.append('wait %d is not 1-3600 seconds' % wait)
    if params.get('encryption') is not None and security not in WPA_SECURITIES + ('802.1x',):
        problems.append('encryption is not taken with security %s (WEP is implied)' % security)
    if params.get('encryption') == 'wep-dynamic' and security != '802.1x':
        problems.append('encryption wep-dynamic is only for 802.1x')
    if params.get('wep_tx_key') is not None:
        if security not in WEP_SECURITIES:
            problems.append('wep_tx_key is only for WEP')
        elif not 1 <= params['wep_tx_key'] <= 4:
            problems.append('wep_tx_key %d is not 1-4' % params['wep_tx_key'])
    if security != '802.1x':
        for name in ('eap', 'inner', 'user'):
            if params.get(name):
                problems.append('%s is only for 802.1x' % name)

    if security == 'none':
        if passphrase is not None:
            problems.append('security none takes no passphrase')
        return problems
    if passphrase is None:
        problems.append('security %s needs a passphrase' % security)
        return problems
    if security in WPA_SECURITIES:
        problem = _wpa_problem(passphrase)
        if problem:
            problems.append(problem)
    elif security in WEP_SECURITIES:
        problems.extend(_wep_problems(passphrase, params.get('wep_tx_key')))
    else:
        if not params.get('eap'):
            problems.append('802.1x needs eap (one or more of %s)' % ', '.join(EAP_METHODS))
        user = params.get('user')
        if not user or not 1 <= _byte_length(user) <= 31:
            problems.append('802.1x needs user, 1-31 bytes')
        if not 1 <= _byte_length(passphrase) <= 255:
            problems.append('the 802.1x password has %d bytes; it takes 1-255' % _byte_length(passphrase))
    return problems


def wifi_arguments(params):
    """corvelctl's `wifi` command line for the options; never the secret."""
    args = ['wifi', '--ssid', params['ssid'], '--security', params['security']]
    for name, option in (('channel', '--channel'), ('mode', '--mode'), ('encryption', '--encryption'),
                         ('wep_tx_key', '--wep-tx-key'), ('inner', '--inner'), ('user', '--user')):
        if params.get(name) is not None:
            args += [option, str(params[name])]
    if params.get('eap'):
        args += ['--eap', ','.join(params['eap'])]
    if params.get('wait') is not None:
        args.append('--wait=%d' % params['wait'])
    return args


def change_needed(status, ssid):
    """Why a printer needs the settings, from what `corvelctl status` reports;
    None when it already has them (the SSID is the same and it has joined)."""
    if status.get('ssid') != ssid:
        return 'its SSID is %s' % ('not set' if status.get('ssid') is None else repr(status['ssid']))
    if not status.get('connected'):
        return 'it has not joined %r' % ssid
    return None
