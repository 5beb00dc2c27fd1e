import { shellQuoted } from './text.js';

function query(still, settle) {
  const { percent, exposureUs } = still.asked;
  return new URLSearchParams({ ...(percent === undefined ? { exposure: `${exposureUs}us` } : { percent }), settle });
}

/** A command that takes such a still again, from this server. */
export function curlCommand(still, { settle, hasSession }) {
  const address = `${location.origin}/cameras/${encodeURIComponent(still.uid)}/still.png?${query(still, settle)}`;
  const token = hasSession ? ' -H "Authorization: Bearer $TOKEN"' : '';
  return `curl --fail${token} -o ${shellQuoted(still.fileName)} ${shellQuoted(address)}`;
}

/** The same from the hub. One that the server has beside it is, seen from elsewhere, the server's machine. */
export function hubCommand(still, { settle, hubHost }) {
  const isLocal = ['localhost', '127.0.0.1', '::1', null].includes(hubHost);
  const host = isLocal ? location.hostname.replace(/^\[|\]$/g, '') : hubHost;
  const isHere = ['localhost', '127.0.0.1', '::1'].includes(host);
  const { percent, exposureUs } = still.asked;
  return ['camera-hub', ...(isHere ? [] : ['--host', shellQuoted(host)]), 'capture',
    '--camera', shellQuoted(still.uid),
    ...(percent === undefined ? ['--exposure', `${exposureUs}us`] : ['--percent', String(percent)]),
    '--settle', settle, '-o', shellQuoted(still.fileName)].join(' ');
}

/** The clipboard's own interface is only there where the page came encrypted, or from this machine. */
export async function copy(text) {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    const field = document.createElement('textarea');
    field.value = text;
    field.readOnly = true;
    field.className = 'unseen';
    const before = document.activeElement;
    document.body.append(field);
    field.select();
    const isDone = document.execCommand('copy');
    field.remove();
    before?.focus();
    return isDone;
  }
}
