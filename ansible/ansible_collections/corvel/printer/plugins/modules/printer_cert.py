#!/usr/bin/python
# -*- coding: utf-8 -*-
# Copyright (c) 2026 the corvelcfg developers
# MIT License (see LICENSE in the collection)

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r'''
module: printer_cert
short_description: Certificates of a USB printer - signing request, CA and own certificate
version_added: 0.1.0
description:
  - C(state=request) has the printer generate a key and a certificate signing request, written to C(dest) on the
    managed host (C(corvelctl cert request)).
  - C(state=install_ca) installs the CA certificate C(src) on the printer, replacing one of the same name
    (C(corvelctl cert install-ca)).
  - C(state=install) installs the printer's own signed certificate C(src) (C(corvelctl cert install)).
  - Each always reports a change; the printer cannot tell whether it holds the same certificate already.
author:
  - corvelcfg developers (!UNKNOWN)
extends_documentation_fragment:
  - corvel.printer.corvelctl
attributes:
  check_mode:
    support: full
    description: Sends nothing and reports a change; checks that C(src) exists for the installs.
  diff_mode:
    support: none
    description: Reports no differences.
options:
  state:
    description: What to do.
    type: str
    required: true
    choices: [request, install_ca, install]
  printer:
    description:
      - The printer, as C(corvelctl --printer) takes it (C(/dev/usb/lp0), C(lp0), C(1:4), C(serial:CVSIM0001)).
      - Without it, the one attached printer (several attached fail the task).
    type: str
  dest:
    description: Where the signing request (PEM) is written, on the managed host. Required with C(state=request).
    type: path
  src:
    description: The certificate (PEM) on the managed host. Required with C(state=install_ca) and C(state=install).
    type: path
  force:
    description: Replace an existing C(dest).
    type: bool
    default: false
  common_name:
    description: The request's common name. Required with C(state=request).
    type: str
  organization:
    description: The request's organization.
    type: str
  unit:
    description: The request's organizational unit.
    type: str
  province:
    description: The request's state or province (C(corvelctl --state)).
    type: str
  country:
    description: The request's two-letter country code.
    type: str
  city:
    description: The request's city (locality).
    type: str
  altname:
    description: The request's subject alternative name.
    type: str
'''

EXAMPLES = r'''
- name: Have the printer make a signing request
  corvel.printer.printer_cert:
    state: request
    printer: serial:CVSIM0001
    dest: /var/lib/corvel/printer.csr
    common_name: printer-7.example.org
    organization: Example
    force: true

- name: Install the CA the network's server certificate comes from
  corvel.printer.printer_cert:
    state: install_ca
    printer: serial:CVSIM0001
    src: /etc/ssl/corp-ca.pem

- name: Install the printer's signed certificate
  corvel.printer.printer_cert:
    state: install
    printer: serial:CVSIM0001
    src: /var/lib/corvel/printer.pem
'''

RETURN = r'''
printer:
  description: The printer's path, as corvelctl names it.
  returned: success, unless in check mode
  type: str
  sample: /dev/usb/lp0
file:
  description: The file written (request) or read (installs).
  returned: success, unless in check mode
  type: str
  sample: /var/lib/corvel/printer.csr
bytes:
  description: The size of the signing request written.
  returned: success with C(state=request), unless in check mode
  type: int
  sample: 489
replaced:
  description: The CA certificate replaced one of the same name.
  returned: success with C(state=install_ca), unless in check mode
  type: bool
exit_status:
  description: corvelctl's exit status when the task failed.
  returned: failure
  type: int
  sample: 65
'''

import os

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.corvel.printer.plugins.module_utils.corvelctl import Corvelctl, CorvelctlError

SUBJECT_OPTIONS = (('common_name', '--common-name'), ('organization', '--org'), ('unit', '--unit'),
                   ('province', '--state'), ('country', '--country'), ('city', '--city'), ('altname', '--altname'))


def command_of(params):
    if params['state'] == 'request':
        args = ['cert', 'request', '--out', params['dest']]
        for name, option in SUBJECT_OPTIONS:
            if params[name] is not None:
                args += [option, params[name]]
        if params['force']:
            args.append('--force')
        return args
    return ['cert', 'install-ca' if params['state'] == 'install_ca' else 'install', params['src']]


def run_module():
    module = AnsibleModule(
        argument_spec=dict(
            state=dict(type='str', required=True, choices=['request', 'install_ca', 'install']),
            printer=dict(type='str'),
            dest=dict(type='path'),
            src=dict(type='path'),
            force=dict(type='bool', default=False),
            common_name=dict(type='str'),
            organization=dict(type='str'),
            unit=dict(type='str'),
            province=dict(type='str'),
            country=dict(type='str'),
            city=dict(type='str'),
            altname=dict(type='str'),
            timeout=dict(type='float'),
        ),
        required_if=[('state', 'request', ('dest', 'common_name')),
                     ('state', 'install_ca', ('src',)),
                     ('state', 'install', ('src',))],
        supports_check_mode=True,
    )
    params = module.params
    if params['state'] != 'request' and not os.path.isfile(params['src']):
        module.fail_json(msg='src %s is not a file on the managed host' % params['src'], exit_status=66)
    if module.check_mode:
        module.exit_json(changed=True)

    corvelctl = Corvelctl(module, params['timeout'])
    try:
        answer = corvelctl.run(command_of(params), params['printer'])
    except CorvelctlError as error:
        module.fail_json(msg=error.describe(), exit_status=error.exit_status)
    answer.pop('installed', None)
    module.exit_json(changed=True, **answer)


def main():
    run_module()


if __name__ == '__main__':
    main()
