#!/usr/bin/env bash
# Builds the bridge and the stand-in SDK (x86_64) and runs the demo against the virtual readers.
# Usage: scripts/demo.sh [poll|callback] [seconds]
exec "$(dirname "$0")/example.sh" Demo "$@"
