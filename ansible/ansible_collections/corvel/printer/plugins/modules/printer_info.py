#!/usr/bin/python
# -*- coding: utf-8 -*-
# Copyright (c) 2026 the corvelcfg developers
# MIT License (see LICENSE in the collection)

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r'''
module: printer_info
short_description: The USB printers attached to the managed host and their network status
version_added: 0.1.0
description:
  - Lists the attached printers (C(corvelctl list)) and reads each one's status (C(corvelctl status)) - SSID,
    connection, address, 802.1x status and certificate subject.
  - Returns them as C(printers) and as the fact C(corvel_printers).
author:
  - corvelcfg developers (!UNKNOWN)
extends_documentation_fragment:
  - corvel.printer.corvelctl
attributes:
  check_mode:
    support: full
    description: Only reads; runs the same in check mode.
  diff_mode:
    support: none
    description: Reports no differences.
  facts:
    support: full
    description: Sets C(corvel_printers).
options:
  printers:
    description:
      - The printers to read, each as C(corvelctl --printer) takes it (C(/dev/usb/lp0), C(lp0), C(1:4),
        C(serial:CVSIM0001)). Without it, every attached printer.
    type: list
    elements: str
'''

EXAMPLES = r'''
- name: Read every attached printer
  corvel.printer.printer_info:

- name: Show the SSID of each printer by serial
  ansible.builtin.debug:
    msg: "{{ item.serial }}: {{ item.status.ssid }}"
  loop: "{{ ansible_facts.corvel_printers }}"

- name: Read one printer
  corvel.printer.printer_info:
    printers: [serial:CVSIM0001]
  register: one
'''

RETURN = r'''
printers:
  description:
    - One entry per printer, in C(corvelctl list) order (or the order named); also set as the fact
      C(corvel_printers).
  returned: always
  type: list
  elements: dict
  contains:
    serial:
      description: Its USB serial number; null when it has none.
      type: str
      sample: CVSIM0001
    selector:
      description: The selector it was reached by.
      type: str
      sample: serial:CVSIM0001
    node:
      description: Its C(/dev/usb/lpN) node; null when it has none.
      type: str
      sample: /dev/usb/lp0
    bus_device:
      description: Its USB bus and device number, C(BBB:DDD).
      type: str
      sample: "001:002"
    vendor_id:
      description: USB vendor id, 4 hex digits.
      type: str
      sample: c0de
    product_id:
      description: USB product id, 4 hex digits.
      type: str
      sample: "0001"
    manufacturer:
      description: USB manufacturer string.
      type: str
    product:
      description: USB product string.
      type: str
    status:
      description: What C(corvelctl status --json) reports; null when it failed (see C(printers[].error)).
      type: dict
      sample:
        ssid: Office
        connected: true
        connection_state: 0
        ipv4: 192.168.1.57
        auth_8021x: {status: 0, name: 802.1x not enabled}
        certificate: {organization: Corvel Simulated Printers, common_name: CORVELSIM-0001}
    error:
      description: corvelctl's message when the status could not be read.
      type: str
    exit_status:
      description: corvelctl's exit status when the status could not be read.
      type: int
ansible_facts:
  description: The facts set.
  returned: always
  type: dict
  contains:
    corvel_printers:
      description: The same list as C(printers).
      type: list
      elements: dict
exit_status:
  description: corvelctl's exit status when the task failed.
  returned: failure
  type: int
  sample: 69
'''

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.corvel.printer.plugins.module_utils.corvelctl import (
    Corvelctl, CorvelctlError, failure_summary, find_listed, identity, selector_of)

LISTED_FIELDS = ('vendor_id', 'product_id', 'manufacturer', 'product')


def run_module():
    module = AnsibleModule(
        argument_spec=dict(
            printers=dict(type='list', elements='str'),
            timeout=dict(type='float'),
        ),
        supports_check_mode=True,
    )
    corvelctl = Corvelctl(module, module.params['timeout'])
    try:
        if module.params['printers'] is not None:
            selectors, listing = corvelctl.resolve(module.params['printers'])
        else:
            # With nothing attached there is nothing to read: an empty list, not a failure.
            listing = corvelctl.list_printers()
            selectors = [selector_of(listed) for listed in listing]
    except CorvelctlError as error:
        module.fail_json(msg=error.describe(), exit_status=error.exit_status)

    printers = []
    errors = []
    for selector, status, error in corvelctl.run_on_printers(selectors, ['status']):
        entry = identity(listing, selector, status)
        listed = find_listed(listing, selector, status)
        entry.update((field, listed.get(field)) for field in LISTED_FIELDS)
        if error is not None:
            entry.update(status=None, error=error.message, exit_status=error.exit_status)
            errors.append(error)
        else:
            entry['status'] = dict((key, value) for key, value in status.items() if key != 'printer')
        printers.append(entry)

    if errors:
        module.fail_json(msg=failure_summary(errors), printers=printers)
    module.exit_json(changed=False, printers=printers, ansible_facts=dict(corvel_printers=printers))


def main():
    run_module()


if __name__ == '__main__':
    main()
