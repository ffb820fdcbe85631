# -*- coding: utf-8 -*-
# Copyright (c) 2026 the corvelcfg developers
# MIT License (see LICENSE in the collection)

from __future__ import absolute_import, division, print_function

__metaclass__ = type


class ModuleDocFragment(object):
    # What every module of the collection shares: corvelctl on the managed host.
    DOCUMENTATION = r'''
options:
  timeout:
    description:
      - The deadline of each exchange with a printer, in seconds (C(corvelctl --timeout)), 1-600.
      - Unset, corvelctl's default of 5 seconds applies.
    type: float
requirements:
  - C(corvelctl) on the managed host, found in C(PATH).
  - Read and write access to the printers (membership of the C(lp) group).
notes:
  - Every module runs C(corvelctl --json) on the managed host; a failure carries corvelctl's own message and its
    exit status in C(exit_status).
'''
