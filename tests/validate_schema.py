"""Validates each document of a JSON array with a JSON Schema (draft 2020-12).

    validate_schema.py SCHEMA DOCS

Prints one line per document: "valid", or its errors sorted and joined by
" | ", each as "<keyword> <path>" with the path as `mdvr-param check` prints
it from MDVR ("MDVR.RP.RCP[0].S"); a key that is not allowed is appended to
its object's path.
"""
import json
import re
import sys

from jsonschema import Draft202012Validator

schema = json.load(open(sys.argv[1]))
Draft202012Validator.check_schema(schema)
validator = Draft202012Validator(schema)
for doc in json.load(open(sys.argv[2])):
    errors = []
    for e in validator.iter_errors(doc):
        path = ''.join('[%d]' % p if isinstance(p, int) else '.' + p for p in list(e.absolute_path)[1:])[1:]
        if e.validator == 'additionalProperties':
            path += '.' + re.search(r"'([^']*)' was unexpected", e.message).group(1)
        errors.append(e.validator + ' ' + path)
    print(' | '.join(sorted(errors)) if errors else 'valid')
