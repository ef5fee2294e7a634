// SPDX-License-Identifier: MIT
// How long the JavaScript client that the official web UI uses takes for the list that Norvo shows first. See ../README.md.
import { create } from 'kubo-rpc-client'

const url = process.argv[2] ?? 'http://127.0.0.1:5001'
const client = create({ url })
const started = performance.now()
const pins = []
for (const type of ['recursive', 'direct']) {
  for await (const pin of client.pin.ls({ type, names: true })) pins.push(pin)
}
console.log(JSON.stringify({
  pins: pins.length,
  seconds: (performance.now() - started) / 1000,
  peakRssMiB: process.resourceUsage().maxRSS / 1024
}))
