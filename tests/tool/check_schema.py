"""Checks lines of JSON against a schema: check_schema.py SCHEMA FILE [whole]. With "whole" the file is one document."""
import json
import sys

import jsonschema

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
with open(sys.argv[2], encoding="utf-8") as file:
    documents = [file.read()] if "whole" in sys.argv[3:] else file.read().splitlines()
if not documents:
    sys.exit("nothing to check")
for document in documents:
    for error in validator.iter_errors(json.loads(document)):
        sys.exit(f"{document}\n{error}")
