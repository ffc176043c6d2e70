// Reads the barcodes of pictures with zxing-wasm, without the network.
//   node scan.mjs FOLDER FORMATS PICTURE...
// FOLDER holds node_modules; FORMATS is a comma-separated list of the reader's format names, or "All". Prints a line of
// JSON for each picture: a list of {format, text, bytes}, with the bytes as hexadecimal text.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join, resolve } from "node:path";

const [folder, formats, ...pictures] = process.argv.slice(2);
const require = createRequire(join(resolve(folder), "package.json"));
const { prepareZXingModule, readBarcodes } = require("zxing-wasm/reader");
const wasmBinary = readFileSync(require.resolve("zxing-wasm/reader/zxing_reader.wasm"));
prepareZXingModule({ overrides: { wasmBinary } });

const options = { formats: formats.split(","), tryHarder: true, tryRotate: false, tryInvert: false, textMode: "Plain" };
for (const picture of pictures) {
  const results = await readBarcodes(new Uint8Array(readFileSync(picture)), options);
  const found = results
    .filter((result) => result.isValid)
    .map(({ format, text, bytes }) => ({ format, text, bytes: Buffer.from(bytes).toString("hex") }));
  console.log(JSON.stringify(found));
}
