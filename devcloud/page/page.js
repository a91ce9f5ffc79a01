'use strict';

// Text from gateways is untrusted, so nothing here turns a string into HTML.
const $ = id => document.getElementById(id);
const kShownRequests = 200, kShownSecrets = 8, kShownBytes = 256 * 1024;

function element(name, attributes, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  made.append(...children);
  return made;
}

const quiet = text => element('span', {class: 'quiet'}, text);
const row = (...cells) => element('tr', {role: 'row'},
    ...cells.map(cell => element('td', {role: 'cell'}, ...[cell].flat())));
const clock = ms => new Date(ms).toLocaleTimeString('en-GB');
const size = bytes => bytes === 1 ? '1 byte' : bytes.toLocaleString('en') + ' bytes';

function fill(body, rows) {
  body.replaceChildren(...rows);
  showWhetherEmpty(body);
}

function showWhetherEmpty(body) {
  const table = body.closest('table');
  table.hidden = !body.firstChild;
  table.nextElementSibling.hidden = !table.hidden;
}

// Throws an Error with the cloud's message if the request fails.
async function call(method, path, body) {
  let answer;
  try {
    answer = await fetch(path, {method, body: body && JSON.stringify(body)});
  } catch {
    throw new Error('The cloud does not answer.');
  }
  const result = await answer.json().catch(() => ({}));
  if (!answer.ok) throw new Error(result.error || 'The cloud answered ' + answer.status + '.');
  return result;
}

async function copy(text, button) {
  try {
    await navigator.clipboard.writeText(text);  // only in a secure context
    button.textContent = 'Copied';
  } catch {
    button.textContent = 'Select and copy';
  }
  setTimeout(() => button.textContent = 'Copy', 2000);
}

function secrets(credentials) {
  const shown = credentials.slice(0, kShownSecrets).map(({kind, short, expires_ms}) =>
      element('span', {}, kind + ' ', element('code', {}, short),
              expires_ms === null ? '' : ' until ' + clock(expires_ms)));
  if (credentials.length > shown.length) {
    shown.push(element('span', {}, 'and ' + (credentials.length - shown.length) + ' more'));
  }
  return element('div', {class: 'secrets'}, ...shown);
}

function describe({kind, path, times, status, bytes, location}) {
  const what = {
    status: 'answers ' + (status || 500),
    body: 'answers 200 with a body' + (bytes ? ' of ' + size(bytes) : ''),
    raw: 'sends raw bytes',
    reset_after: 'resets after ' + size(bytes), truncate_after: 'truncates after ' + size(bytes),
    stall: 'does not answer', drip: 'sends one byte at a time',
    redirect: 'redirects (' + (status || 302) + ') to ' + (location || 'the same path'),
  }[kind];
  const left = times < 0 ? 'until switched off' : times === 1 ? 'next request' :
      'next ' + times + ' requests';
  return [(path === '*' ? 'Every path ' : path + ' ') + what, quiet(left)];
}

function faultItem(texts, path) {
  const button = element('button', {type: 'button'}, 'Switch off');
  button.addEventListener('click', () => endFaults(path));
  return element('li', {}, element('span', {}, ...texts), button);
}

async function endFaults(path) {
  await call('DELETE', path).catch(error => $('fault-error').textContent = error.message);
  $('faults-title').focus();
}

const parts = {
  urls(urls) {
    const entry = (name, ...list) => element('div', {}, element('dt', {}, name),
        ...list.map(url => element('dd', {}, element('code', {}, url))));
    $('urls').replaceChildren(entry('For gateways', urls.http, urls.https),
                              entry('Page and API', urls.api));
    $('refuse-help').textContent = 'Closes the HTTP and HTTPS ports. The page remains at ' +
        urls.api + '/.';
  },
  users(users, state) {
    fill($('users'), users.map(({user_id, guid, credentials}) =>
        row([user_id, quiet(guid)], secrets(credentials))));
    parts.devices(state.devices, state);
  },
  devices(devices, {users}) {
    const names = new Map(users.map(({guid, user_id}) => [guid, user_id]));
    fill($('devices'), devices.map(device =>
        row([device.physical_address, quiet(device.peer_id)],
            device.users.map(guid => names.get(guid) || guid).join(', ') || quiet('none'))));
  },
  faults(faults, {is_refusing}) {
    const items = faults.map(fault =>
        faultItem(describe(fault), '/api/faults?number=' + fault.number));
    if (is_refusing) {
      items.push(faultItem(['Connections are refused', quiet('until switched off')],
                           '/api/faults?kind=refuse'));
    }
    $('faults').replaceChildren(...items);
    $('no-faults').hidden = items.length > 0;
    showEndFaults();
  },
  clock_ahead_seconds(seconds) {
    $('clock').hidden = seconds === 0;
    $('clock').textContent = 'The cloud’s clock is ' + seconds.toLocaleString('en') +
        ' seconds ahead.';
  },
  is_refusing: (_, state) => parts.faults(state.faults, state),
};

// Only the parts that differ are rebuilt, so that focus and selection are kept.
let shown = {};
function showState(state) {
  for (const [name, show] of Object.entries(parts)) {
    const text = JSON.stringify(state[name]);
    if (shown[name] !== text) show(state[name], state);
    shown[name] = text;
  }
}

const rows = new Map();  // by number: {row, summary}

function requestRow(summary) {
  const {number, time_ms, tls, method, target, request_bytes, fault, answer_line, answer_bytes} =
      summary;
  const open = element('button', {type: 'button'},
                       method ? method + ' ' + target : 'not an HTTP request');
  open.addEventListener('click', () => showExchange(number));
  const status = /^HTTP\/1\.1 (\d+.*)$/.exec(answer_line || '');
  const answer = answer_line === null ? 'no answer yet' :
      answer_bytes === 0 ? 'nothing' : status ? status[1] : answer_line;
  const made = row(clock(time_ms), [open, quiet((tls ? 'https, ' : 'http, ') + size(request_bytes))],
                   [element('span', {}, answer), answer_bytes ? quiet(size(answer_bytes)) : ''],
                   fault.replaceAll('_', ' '));
  if (fault || (status && status[1] >= '4')) {
    made.children[2].firstChild.className = made.children[3].className = 'bad';
  }
  return made;
}

function showRequests({from_start, oldest, requests}) {
  if (from_start) {  // numbers begin again
    rows.clear();
    $('requests').replaceChildren();
  }
  for (const summary of requests) {
    const made = requestRow(summary);
    const old = rows.get(summary.number);
    if (!old) {
      $('requests').prepend(made);
    } else {
      const hadFocus = old.row.contains(document.activeElement);
      old.row.replaceWith(made);
      if (hadFocus) made.querySelector('button').focus();
    }
    rows.set(summary.number, {row: made, summary});
  }
  for (const [number, {row}] of rows) {
    if (number >= oldest && rows.size <= kShownRequests) break;
    row.remove();
    rows.delete(number);
  }
  $('forget').hidden = rows.size === 0;
  showWhetherEmpty($('requests'));
  showEndFaults();
}

// A stalled request may wait for a fault that was used up and is no longer in the list.
function showEndFaults() {
  const isWaiting = [...rows.values()].some(({summary}) => summary.answer_line === null);
  $('end-faults').hidden = !isWaiting && $('faults').children.length < 2;
}

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

async function showExchange(number) {
  const {method, target, tls, time_ms, fault} = rows.get(number).summary;
  $('exchange-title').textContent = method ? method + ' ' + target : 'Not an HTTP request';
  $('exchange-about').textContent = 'Number ' + number + ', over ' + (tls ? 'HTTPS' : 'HTTP') +
      ', at ' + clock(time_ms) + (fault ? ', met the fault “' + fault.replaceAll('_', ' ') + '”' : '');
  const [request, answer] = await Promise.all([fetchPart(number, 'request'),
                                               fetchPart(number, 'answer')]);
  exchange = {request, answer};
  renderExchange();
  $('exchange').showModal();
}

function showFaultFields() {
  const kind = $('kind').value;
  for (const field of $('fault').querySelectorAll('[data-for], [data-not]')) {
    const {for: kinds, not} = field.dataset;
    field.hidden = kinds ? !kinds.split(' ').includes(kind) : not === kind;
    if ('disabled' in field) field.disabled = field.hidden;  // so that the form does not validate it
  }
  $('status').placeholder = kind === 'redirect' ? '302' : '500';
  $('bytes').placeholder = kind === 'body' ? 'as long as the body' : '0';
}

function readFault() {
  const fault = {kind: $('kind').value};
  if (fault.kind === 'refuse') return fault;
  fault.times = $('times').value ? Number($('times').value) : -1;
  for (const id of ['path', 'status', 'bytes', 'location', 'content_type', 'body']) {
    const field = $(id);
    if (field.disabled || field.value === '') continue;
    fault[id] = field.type === 'number' ? Number(field.value) : field.value;
  }
  if (!$('header_lines').disabled) {
    fault.header_lines = $('header_lines').value.split('\n').filter(line => line !== '');
  }
  return fault;
}

async function submit(event, errorId, action) {
  event.preventDefault();
  $(errorId).textContent = '';
  try {
    await action();
  } catch (error) {
    $(errorId).textContent = error.message;
  }
}

$('kind').addEventListener('change', showFaultFields);
$('fault').addEventListener('submit', event =>
    submit(event, 'fault-error', () => call('POST', '/api/faults', readFault())));
$('sign-in').addEventListener('submit', event => submit(event, 'sign-in-error', async () => {
  const user = $('user').value;
  const {code} = await call('POST', '/api/codes', {user});
  $('issued-user').textContent = user;
  $('code').textContent = code;
  $('issued').hidden = false;
}));
$('copy-code').addEventListener('click', () => copy($('code').textContent, $('copy-code')));
$('end-faults').addEventListener('click', () => endFaults('/api/faults'));
$('forget').addEventListener('click', () => call('DELETE', '/api/requests').catch(() => {}));
$('close-exchange').addEventListener('click', () => $('exchange').close());
$('line-ends').addEventListener('change', renderExchange);

let source = null;

function showConnection(state, text) {
  $('connection').dataset.state = state;
  $('connection').textContent = text;
}

function connect() {
  if (source) source.close();
  source = new EventSource('/api/events');
  source.addEventListener('open', () => {
    showConnection('live', 'live');
    shown = {};  // the cloud may have been restarted
  });
  source.addEventListener('state', event => showState(JSON.parse(event.data)));
  source.addEventListener('requests', event => showRequests(JSON.parse(event.data)));
  source.addEventListener('error', () => {
    showConnection('lost', 'not connected, trying again');
    if (source.readyState === EventSource.CLOSED) setTimeout(() => document.hidden || connect(), 2000);
  });
}

// Browsers allow six connections to a server, so hidden pages close theirs.
document.addEventListener('visibilitychange', () => {
  if (!document.hidden) return connect();
  source.close();
  showConnection('waiting', 'paused');
});

showFaultFields();
fill($('users'), []);
fill($('devices'), []);
showRequests({from_start: true, oldest: 0, requests: []});
connect();
