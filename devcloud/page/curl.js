// A recorded request as a command for a POSIX shell.

const latin1 = bytes => Array.from(bytes, byte => String.fromCharCode(byte)).join('');
const utf8 = bytes => new TextDecoder().decode(bytes);
const quote = text => "'" + text.replaceAll("'", "'\\''") + "'";

function headEnd(text) {
  const found = /\r?\n\r?\n/.exec(text);
  return found ? [found.index, found.index + found[0].length] : [text.length, text.length];
}

// The body without chunked framing.
function joinChunks(body) {
  const text = latin1(body);
  const parts = [];
  for (let at = 0; at < text.length;) {
    const begin = text.indexOf('\n', at) + 1;
    const length = parseInt(text.slice(at, begin), 16);
    if (!begin || !length) break;
    parts.push(...body.subarray(begin, begin + length));
    at = text.indexOf('\n', begin + length) + 1;
  }
  return Uint8Array.from(parts);
}

// An argument cannot hold every byte nor too many, and echo differs between shells: such a body comes from
// printf, which would take a "-" for an option.
function bodyArguments(body) {
  const isText = body.length < 100000 && body.every(byte => byte === 10 || byte >= 32 && byte < 127);
  if (isText) return ['', ['--data-raw ' + quote(utf8(body))]];
  const octal = Array.from(body, byte => byte >= 32 && byte < 127 && ![37, 45, 92].includes(byte) ?
      String.fromCharCode(byte) : '\\' + byte.toString(8).padStart(3, '0')).join('');
  return ['printf ' + quote(octal) + ' | ', ['--data-binary @-']];
}

// What curl adds by itself is switched off where the request does not have it.
function headerArguments(lines, hasBody) {
  const names = lines.map(line => line.split(':')[0].toLowerCase());
  const own = ['accept', 'user-agent', 'host', ...(hasBody ? ['content-type', 'expect'] : [])];
  const kept = lines.filter((_, i) => !['content-length', 'transfer-encoding'].includes(names[i]));
  // "Name;" is curl's way to send a line without a value.
  const sent = kept.map(line => line.replace(/^([^:]*):\s*$/, '$1;'));
  return [...sent, ...own.filter(name => !names.includes(name)).map(name => name + ':')]
      .map(line => '-H ' + quote(line));
}

// `origin` is the URL of the gateways' port with its scheme, without a path.
export function asCurl(bytes, method, target, origin) {
  const [end, bodyBegin] = headEnd(latin1(bytes));
  const lines = utf8(bytes.subarray(0, end)).split(/\r?\n/).slice(1);
  const isChunked = lines.some(line => /^transfer-encoding:.*chunked/i.test(line));
  const rest = bytes.subarray(bodyBegin);
  const body = isChunked ? joinChunks(rest) : rest;
  // curl sends no body with a HEAD.
  const [before, data] = body.length && method !== 'HEAD' ? bodyArguments(body) : ['', []];
  const flags = origin.startsWith('https') ? ['--insecure'] : [];  // the certificate is its own
  if (/[[\]{}]|\/\./.test(target)) flags.push('--globoff', '--path-as-is');
  if (method === 'HEAD') flags.push('--head');
  else if (method !== (body.length ? 'POST' : 'GET')) flags.push('-X ' + quote(method));
  const isPath = target.startsWith('/') && !target.includes('#');
  const url = isPath ? origin + target : origin;
  if (!isPath) flags.push('--request-target ' + quote(target));
  return before + ['curl', ...flags, quote(url), ...headerArguments(lines, body.length > 0), ...data]
      .join(' \\\n  ');
}
