const narrowSpace = '\u202f';

/** 15625 as "15 625". */
export function grouped(number) {
  return String(Math.round(number)).replace(/\B(?=(\d{3})+$)/g, narrowSpace);
}

function decimals(number, most) {
  return String(Number(number.toFixed(most)));
}

/** Microseconds in the unit that suits them: "976 µs", "15.625 ms", "1 s". */
export function timeText(us) {
  if (us < 1e3) return `${decimals(us, 0)} µs`;
  if (us < 1e6) return `${decimals(us / 1e3, us < 1e5 ? 1 : 0)} ms`;
  return `${decimals(us / 1e6, 2)} s`;
}

export function secondsText(ms) {
  return `${(ms / 1000).toFixed(1)} s`;
}

export function bytesText(bytes) {
  if (bytes < 1e6) return `${decimals(bytes / 1e3, 1)} kB`;
  return bytes < 1e9 ? `${decimals(bytes / 1e6, 1)} MB` : `${decimals(bytes / 1e9, 2)} GB`;
}

export function shareText(share) {
  if (share === 0) return '0 %';
  return share < 0.0005 ? '< 0.1 %' : `${(share * 100).toFixed(share < 0.1 ? 1 : 0)} %`;
}

function digits(...numbers) {
  return numbers.map((number) => String(number).padStart(2, '0'));
}

/** "16:20:05", here. */
export function clockText(date) {
  return digits(date.getHours(), date.getMinutes(), date.getSeconds()).join(':');
}

/** "2026-11-22 16:20:05", here: in the order that everybody reads. */
export function dateText(date) {
  return `${digits(date.getFullYear(), date.getMonth() + 1, date.getDate()).join('-')} ${clockText(date)}`;
}

export function countText(count, one, many) {
  return `${count} ${count === 1 ? one : many}`;
}

/** For a shell, which takes nothing in it for its own. */
export function shellQuoted(text) {
  return /^[A-Za-z0-9_.,:/@%+-]+$/.test(text) ? text : `'${text.replaceAll("'", "'\\''")}'`;
}

/** What was asked for with a still: "1/64 s" where it is a stop of the camera. */
export function askedText(still, camera) {
  if (still.asked.percent !== undefined) return `${still.asked.percent} %`;
  const us = still.asked.exposureUs;
  return camera?.stops.find((stop) => stop.us === us)?.text ?? timeText(us);
}

/** "1/64 s" of "1/64 s (15.625 ms)". */
export function shortExposure(still) {
  return still.exposureText === null ? 'not known' : still.exposureText.replace(/ \(.*\)$/, '');
}
