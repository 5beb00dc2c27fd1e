// A ZIP file without compression, which PNG files would not gain from.

const table = Uint32Array.from({ length: 256 }, (_, byte) => {
  let value = byte;
  for (let bit = 0; bit < 8; ++bit) value = value & 1 ? (value >>> 1) ^ 0xedb88320 : value >>> 1;
  return value;
});

export function crc32(bytes) {
  let crc = 0xffffffff;
  for (const byte of bytes) crc = table[(crc ^ byte) & 0xff] ^ (crc >>> 8);
  return (crc ^ 0xffffffff) >>> 0;
}

/** What the format's 32 bits can address, with room for the directory. */
export const largestZip = 0xf0000000;

const utf8Names = 0x0800;
const version = 20;

function dosTime(date) {
  const time = (date.getHours() << 11) | (date.getMinutes() << 5) | (date.getSeconds() >> 1);
  const day = ((Math.max(date.getFullYear(), 1980) - 1980) << 9) | ((date.getMonth() + 1) << 5) | date.getDate();
  return [time, day];
}

/** Fields of 2 or 4 bytes, little-endian. */
function record(...fields) {
  const bytes = new DataView(new ArrayBuffer(fields.reduce((sum, [size]) => sum + size, 0)));
  let offset = 0;
  for (const [size, value] of fields) {
    if (size === 2) bytes.setUint16(offset, value, true);
    else bytes.setUint32(offset, value, true);
    offset += size;
  }
  return bytes;
}

/** What a file's own head and its line in the directory have in common. */
function description(file, name) {
  const [time, day] = dosTime(file.date);
  return [[2, version], [2, utf8Names], [2, 0], [2, time], [2, day], [4, file.crc], [4, file.blob.size],
    [4, file.blob.size], [2, name.length], [2, 0]];
}

/** Of files {name, blob, crc, date}, whose names differ. */
export function zipOf(files) {
  const parts = [];
  const directory = [];
  let offset = 0;
  for (const file of files) {
    const name = new TextEncoder().encode(file.name);
    const fields = description(file, name);
    parts.push(record([4, 0x04034b50], ...fields), name, file.blob);
    directory.push(record([4, 0x02014b50], [2, version], ...fields, [2, 0], [2, 0], [2, 0], [4, 0], [4, offset]), name);
    offset += 30 + name.length + file.blob.size;
  }
  const size = directory.reduce((sum, part) => sum + part.byteLength, 0);
  const end = record([4, 0x06054b50], [2, 0], [2, 0], [2, files.length], [2, files.length], [4, size], [4, offset],
    [2, 0]);
  return new Blob([...parts, ...directory, end], { type: 'application/zip' });
}

/** Has the browser save it. */
export function save(blob, name) {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(blob);
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60_000);
}
