#!/usr/bin/python
# -*- coding: utf-8 -*-
# Copyright (c) 2026 the corvelcfg developers
# MIT License (see LICENSE in the collection)

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r'''
module: printer_wifi
short_description: Set the Wi-Fi network of USB printers
version_added: 0.1.0
description:
  - Sends the settings of a wireless network to one printer, several, or every printer attached to the managed host,
    through C(corvelctl wifi).
  - A printer that already reports the SSID and has joined the network is left alone (not changed) unless
    C(force=true).
  - The options are checked before any printer is talked to; a passphrase of the wrong length fails the task with
    nothing sent.
  - The passphrase goes to corvelctl on its standard input, never on its command line.
author:
  - corvelcfg developers (!UNKNOWN)
extends_documentation_fragment:
  - corvel.printer.corvelctl
attributes:
  check_mode:
    support: full
    description: Reads each printer's status only and reports which ones would change; sends no settings.
  diff_mode:
    support: none
    description: Reports no differences.
options:
  printer:
    description:
      - One printer to configure, as C(corvelctl --printer) takes it (C(/dev/usb/lp0), C(lp0), C(1:4),
        C(serial:CVSIM0001)).
      - Without C(printer) and C(printers), every attached printer.
    type: str
  printers:
    description:
      - Several printers to configure, each a selector as for C(printer).
    type: list
    elements: str
  ssid:
    description: The network's name, 1-32 bytes.
    type: str
    required: true
  security:
    description:
      - The network's security. The printer has no WPA-only mode (C(wpa-wpa2-psk) accepts WPA or WPA2), and its
        enterprise authentication is C(802.1x).
    type: str
    required: true
    choices: [none, wep-open, wep-shared, wpa-wpa2-psk, wpa2-psk, 802.1x]
  channel:
    description: The channel, 1-11. corvelctl's default is 6.
    type: int
  mode:
    description: Infrastructure (C(managed)) or C(ad-hoc). corvelctl's default is C(managed).
    type: str
    choices: [managed, ad-hoc]
  encryption:
    description:
      - The cipher of C(wpa-wpa2-psk), C(wpa2-psk) (C(tkip) or C(aes)) and C(802.1x) (also C(wep-dynamic)).
        corvelctl's default is C(aes). Not taken with the WEP securities or C(none).
    type: str
    choices: [tkip, aes, wep-dynamic]
  wep_tx_key:
    description: The WEP key the printer sends with, 1-4; it must be one that C(passphrase) gives.
    type: int
  eap:
    description: The EAP methods of C(802.1x) (required with it).
    type: list
    elements: str
    choices: [md5, mschapv2, leap, peap, tls, ttls]
  inner:
    description: The inner authentication of C(802.1x).
    type: str
    choices: [chap, mschap, mschapv2, pap]
  user:
    description: The C(802.1x) user name, 1-31 bytes (required with it).
    type: str
  passphrase:
    description:
      - The secret. WPA, 8-63 printable ASCII characters or 64 hex digits. WEP, 1-4 keys one per line, each 5 or 13
        characters or 10 or 26 hex digits. C(802.1x), the password, 1-255 bytes. Not taken with C(security=none).
    type: str
  wait:
    description:
      - After the settings are accepted, wait up to this many seconds (1-3600) until the printer has joined the
        network and has an address, which is returned as C(printers[].ipv4).
    type: int
  force:
    description: Send the settings even to a printer that already reports them.
    type: bool
    default: false
'''

EXAMPLES = r'''
- name: Put every attached printer on the office network
  corvel.printer.printer_wifi:
    ssid: Office
    security: wpa2-psk
    passphrase: "{{ office_wifi_passphrase }}"
    wait: 60

- name: One printer, by its serial, on a WEP network sending with the second key
  corvel.printer.printer_wifi:
    printer: serial:CVSIM0001
    ssid: Lab
    security: wep-open
    passphrase: "{{ ['abcde', '0123456789'] | join('\n') }}"
    wep_tx_key: 2

- name: Two printers on an 802.1x network
  corvel.printer.printer_wifi:
    printers: [lp0, lp1]
    ssid: Corp
    security: 802.1x
    eap: [peap]
    inner: mschapv2
    user: printer-7
    passphrase: "{{ corp_password }}"
'''

RETURN = r'''
printers:
  description: One entry per printer, in the order they were named (or listed).
  returned: always
  type: list
  elements: dict
  contains:
    selector:
      description: The selector the printer was reached by.
      type: str
      sample: serial:CVSIM0001
    serial:
      description: Its USB serial number, if it has one.
      type: str
      sample: CVSIM0001
    node:
      description: Its C(/dev/usb/lpN) node, if it has one.
      type: str
      sample: /dev/usb/lp0
    changed:
      description: Whether the settings were sent (in check mode, would be sent).
      type: bool
    reason:
      description: Why the settings were (or would be) sent, or why not.
      type: str
      sample: its SSID is 'Guest'
    ssid_before:
      description: The SSID the printer reported before.
      type: str
    connected_before:
      description: Whether it had joined a network before.
      type: bool
    accepted:
      description: The printer accepted the settings (only when they were sent).
      type: bool
    plain_retry:
      description: The settings had to be sent again without the pass-through envelope.
      type: bool
    ipv4:
      description: The address it got (only with C(wait) and when the settings were sent).
      type: str
      sample: 192.168.1.57
    error:
      description: corvelctl's message when this printer failed.
      type: str
    exit_status:
      description: corvelctl's exit status when this printer failed.
      type: int
exit_status:
  description: corvelctl's exit status when the task failed because of one call (no printer, a usage error).
  returned: failure
  type: int
  sample: 69
'''

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.corvel.printer.plugins.module_utils.corvelctl import (
    Corvelctl, CorvelctlError, failure_summary, identity)
from ansible_collections.corvel.printer.plugins.module_utils.wifi import (
    EAP_METHODS, SECURITIES, change_needed, settings_problems, wifi_arguments)


def run_module():
    module = AnsibleModule(
        argument_spec=dict(
            printer=dict(type='str'),
            printers=dict(type='list', elements='str'),
            ssid=dict(type='str', required=True),
            security=dict(type='str', required=True, choices=SECURITIES),
            channel=dict(type='int'),
            mode=dict(type='str', choices=['managed', 'ad-hoc']),
            encryption=dict(type='str', choices=['tkip', 'aes', 'wep-dynamic']),
            wep_tx_key=dict(type='int', no_log=False),
            eap=dict(type='list', elements='str', choices=EAP_METHODS),
            inner=dict(type='str', choices=['chap', 'mschap', 'mschapv2', 'pap']),
            user=dict(type='str'),
            passphrase=dict(type='str', no_log=True),
            wait=dict(type='int'),
            force=dict(type='bool', default=False),
            timeout=dict(type='float'),
        ),
        mutually_exclusive=[('printer', 'printers')],
        supports_check_mode=True,
    )
    params = module.params
    problems = settings_problems(params)
    if problems:
        module.fail_json(msg='; '.join(problems), printers=[])

    corvelctl = Corvelctl(module, params['timeout'])
    named = [params['printer']] if params['printer'] is not None else params['printers']
    try:
        selectors, listing = corvelctl.resolve(named)
    except CorvelctlError as error:
        module.fail_json(msg=error.describe(), exit_status=error.exit_status, printers=[])

    reports = {}
    errors = []
    to_configure = []
    for selector, status, error in corvelctl.run_on_printers(selectors, ['status']):
        report = identity(listing, selector, status)
        reports[selector] = report
        if error is not None:
            report.update(changed=False, error=error.message, exit_status=error.exit_status)
            errors.append(error)
            continue
        reason = change_needed(status, params['ssid'])
        if reason is None and params['force']:
            reason = 'force'
        report.update(ssid_before=status['ssid'], connected_before=status['connected'],
                      changed=reason is not None, reason=reason or 'it reports %r and has joined' % params['ssid'])
        if reason is not None:
            to_configure.append(selector)

    if to_configure and not module.check_mode:
        answers = corvelctl.run_on_printers(to_configure, wifi_arguments(params), params['passphrase'])
        for selector, answer, error in answers:
            report = reports[selector]
            if error is not None:
                report.update(changed=False, error=error.message, exit_status=error.exit_status)
                errors.append(error)
                continue
            report.update(accepted=answer['accepted'], plain_retry=answer['plain_retry'])
            if 'ipv4' in answer:
                report['ipv4'] = answer['ipv4']

    results = [reports[selector] for selector in selectors]
    changed = any(report['changed'] for report in results)
    if errors:
        module.fail_json(msg=failure_summary(errors), changed=changed, printers=results)
    module.exit_json(changed=changed, printers=results)


def main():
    run_module()


if __name__ == '__main__':
    main()
