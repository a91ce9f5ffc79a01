// One request and its answer, byte for byte.
import {$, clock, copy, size} from './dom.js';
import {asCurl} from './curl.js';

const kShownBytes = 256 * 1024;
let exchange = {};

// Shows line ends as line breaks and unprintable bytes as \xNN.
function readable(bytes) {
  const part = bytes.subarray(0, kShownBytes);
  let text;
  try {
    text = new TextDecoder('utf-8', {fatal: true, ignoreBOM: true}).decode(part);
  } catch {
    text = Array.from(part, byte => byte < 0x80 ? String.fromCharCode(byte) : '\\x' +
        byte.toString(16)).join('');
  }
  const hex = c => '\\x' + c.charCodeAt(0).toString(16).padStart(2, '0');
  const ends = $('line-ends').checked;
  text = text.replace(/\r?\n/g, end => ends ? (end === '\n' ? '\\n\n' : '\\r\\n\n') : '\n')
      .replace(/[\x00-\x08\x0b-\x1f\x7f]/g, hex);
  return bytes.length > part.length ? text + '\n… ' + size(bytes.length - part.length) +
      ' more: save them' : text;
}

function renderExchange() {
  for (const part of ['request', 'answer']) {
    const bytes = exchange[part];
    $(part + '-bytes').textContent = bytes instanceof Uint8Array ?
        (bytes.length ? readable(bytes) : '(no bytes)') : bytes;
  }
}

async function fetchPart(number, part) {
  const url = '/api/exchange?number=' + number + '&part=' + part;
  const link = $(part + '-file');
  link.href = url;
  link.download = part + '-' + number + '.bin';
  link.textContent = 'Save the ' + part;
  const answer = await fetch(url).catch(() => null);
  link.hidden = !answer || !answer.ok;
  if (!answer) return 'The cloud does not answer.';
  if (!answer.ok) return (await answer.json()).error;
  return new Uint8Array(await answer.arrayBuffer());
}

// `urls` are the cloud's.
export async function showExchange(summary, urls) {
  const {number, method, target, tls, time_ms, fault, user} = summary;
  $('exchange-title').textContent = method ? method + ' ' + target : 'Not an HTTP request';
  $('exchange-about').textContent = 'Number ' + number + ', over ' + (tls ? 'HTTPS' : 'HTTP') +
      ', at ' + clock(time_ms) + (user ? ', for ' + user : '') +
      (fault ? ', met the fault “' + fault.replaceAll('_', ' ') + '”' : '');
  const [request, answer] = await Promise.all([fetchPart(number, 'request'),
                                               fetchPart(number, 'answer')]);
  exchange = {request, answer, method, origin: tls ? urls.https : urls.http};
  renderExchange();
  $('copy-curl').hidden = !method || !(request instanceof Uint8Array);
  $('curl').hidden = true;
  $('exchange').showModal();
}

// Also shown, for those whose browser lets no page copy.
function copyCurl() {
  const {request, method, origin} = exchange;
  // The summary's target may be cut.
  const target = new TextDecoder().decode(request).split(' ', 2)[1];
  $('curl').textContent = asCurl(request, method, target, origin);
  $('curl').hidden = false;
  copy($('curl').textContent, $('copy-curl'));
}

export function setUpExchange() {
  $('close-exchange').addEventListener('click', () => $('exchange').close());
  $('line-ends').addEventListener('change', renderExchange);
  $('copy-curl').addEventListener('click', copyCurl);
}
