# -*- coding: utf-8 -*-
# Copyright (c) 2026 the corvelcfg developers
# MIT License (see LICENSE in the collection)

from __future__ import absolute_import, division, print_function

__metaclass__ = type

import unittest

from ansible_collections.corvel.printer.plugins.module_utils.wifi import (
    change_needed, settings_problems, wifi_arguments)


def options(**given):
    params = dict(ssid='Office', security='wpa2-psk', passphrase='12345678', channel=None, mode=None,
                  encryption=None, wep_tx_key=None, eap=None, inner=None, user=None, wait=None)
    params.update(given)
    return params


class SettingsProblemsTest(unittest.TestCase):
    def test_what_corvelctl_takes_passes(self):
        accepted = [
            options(passphrase='1234567'.ljust(8, 'x')),
            options(passphrase='p' * 63, security='wpa-wpa2-psk', encryption='tkip'),
            options(passphrase='0123456789abcdefABCDEF' * 2 + '0123456789abcdefABCD'),  # 64 hex digits
            options(ssid='s' * 32, security='none', passphrase=None),
            options(ssid=u'\u00e9' * 16),  # 32 bytes
            options(security='wep-open', passphrase='abcde'),
            options(security='wep-shared', passphrase='abcde\n0123456789\n' + 'm' * 13 + '\n' + 'aB' * 13,
                    wep_tx_key=4),
            options(security='802.1x', passphrase='p', eap=['peap'], user='u' * 31, encryption='wep-dynamic'),
            options(channel=11, wait=3600),
        ]
        for params in accepted:
            self.assertEqual(settings_problems(params), [], params)

    def test_what_corvelctl_refuses_fails_with_a_reason(self):
        refused = [
            (options(passphrase='1234567'), 'the passphrase has 7 characters; WPA needs 8-63'),
            (options(passphrase='p' * 64), 'the passphrase has 64 characters'),  # 64, but not hex
            (options(passphrase=u'caf\u00e9 1234'), 'the passphrase has 9 characters'),  # not ASCII
            (options(passphrase='tab\there1'), 'the passphrase has 9 characters'),  # not printable
            (options(passphrase=None), 'needs a passphrase'),
            (options(ssid=''), 'ssid has 0 bytes'),
            (options(ssid=u'\u00e9' * 17), 'ssid has 34 bytes'),
            (options(security='none'), 'takes no passphrase'),
            (options(security='wep-open', passphrase='abcdef'), 'WEP key 1 has 6 characters'),
            (options(security='wep-open', passphrase='0123456789abcdefghijklmnop'), 'WEP key 1 has 26'),
            (options(security='wep-open', passphrase='abcde\n\nabcde'), 'WEP key 2 has 0 characters'),
            (options(security='wep-open', passphrase='abcde\n' * 4 + 'abcde'), 'WEP takes 1-4 keys'),
            (options(security='wep-open', passphrase='abcde', wep_tx_key=2), 'wep_tx_key 2 names a key'),
            (options(security='wep-open', passphrase='abcde', encryption='aes'), 'encryption is not taken'),
            (options(encryption='wep-dynamic'), 'wep-dynamic is only for 802.1x'),
            (options(security='802.1x', passphrase='p', user='me'), '802.1x needs eap'),
            (options(security='802.1x', passphrase='p', eap=['tls'], user='u' * 32), 'needs user, 1-31 bytes'),
            (options(security='802.1x', passphrase='p' * 256, eap=['tls'], user='me'), 'password has 256 bytes'),
            (options(user='me'), 'user is only for 802.1x'),
            (options(channel=12), 'channel 12 is not 1-11'),
            (options(wait=0), 'wait 0 is not 1-3600'),
        ]
        for params, reason in refused:
            problems = settings_problems(params)
            self.assertTrue(any(reason in problem for problem in problems), (reason, problems))


class WifiArgumentsTest(unittest.TestCase):
    def test_options_become_corvelctls_and_the_secret_stays_out(self):
        args = wifi_arguments(options(security='802.1x', passphrase='hunter22', eap=['peap', 'ttls'],
                                      inner='pap', user='me', channel=3, mode='ad-hoc', wait=30))
        self.assertEqual(args, ['wifi', '--ssid', 'Office', '--security', '802.1x', '--channel', '3',
                                '--mode', 'ad-hoc', '--inner', 'pap', '--user', 'me', '--eap', 'peap,ttls',
                                '--wait=30'])
        self.assertNotIn('hunter22', ' '.join(args))


class ChangeNeededTest(unittest.TestCase):
    def test_only_a_printer_on_the_network_is_left_alone(self):
        cases = [
            ({'ssid': 'Office', 'connected': True}, None),
            ({'ssid': 'Office', 'connected': False}, "it has not joined 'Office'"),
            ({'ssid': 'office', 'connected': True}, "its SSID is 'office'"),
            ({'ssid': None, 'connected': False}, 'its SSID is not set'),
        ]
        for status, reason in cases:
            self.assertEqual(change_needed(status, 'Office'), reason, status)


if __name__ == '__main__':
    unittest.main()
