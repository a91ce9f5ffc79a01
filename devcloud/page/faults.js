// The list of faults, and the form that switches one on.
import {$, call, element, quiet, size} from './dom.js';
import {isAnyWaiting} from './requests.js';

function describe({kind, path, user, times, status, bytes, location}) {
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
  return [(path === '*' ? 'Every path ' : path + ' ') + what,
          quiet((user === '*' ? '' : user + ', ') + left)];
}

function faultItem(texts, path) {
  const button = element('button', {type: 'button'}, 'Switch off');
  button.addEventListener('click', () => endFaults(path));
  return element('li', {}, element('span', {}, ...texts), button);
}

export async function endFaults(path) {
  await call('DELETE', path).catch(error => $('fault-error').textContent = error.message);
  $('faults-title').focus();
}

export function showFaults({faults, is_refusing}) {
  const items = faults.map(fault =>
      faultItem(describe(fault), '/api/faults?number=' + fault.number));
  if (is_refusing) {
    items.push(faultItem(['Connections are refused', quiet('until switched off')],
                         '/api/faults?kind=refuse'));
  }
  $('faults').replaceChildren(...items);
  $('no-faults').hidden = items.length > 0;
  showEndFaults();
}

export function showEndFaults() {
  $('end-faults').hidden = !isAnyWaiting() && $('faults').children.length < 2;
}

export function showFaultFields() {
  const kind = $('kind').value;
  for (const field of $('fault').querySelectorAll('[data-for], [data-not]')) {
    const {for: kinds, not} = field.dataset;
    field.hidden = kinds ? !kinds.split(' ').includes(kind) : not === kind;
    if ('disabled' in field) field.disabled = field.hidden;  // so that the form does not validate it
  }
  $('status').placeholder = kind === 'redirect' ? '302' : '500';
  $('bytes').placeholder = kind === 'body' ? 'as long as the body' : '0';
}

export function readFault() {
  const fault = {kind: $('kind').value};
  if (fault.kind === 'refuse') return fault;
  fault.times = $('times').value ? Number($('times').value) : -1;
  if ($('fault-user').value) fault.user = $('fault-user').value;
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
