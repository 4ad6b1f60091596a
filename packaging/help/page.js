// Search in the pages, and the switch between light and dark. Works from a folder, without a server.
(function () {
  var root = document.documentElement;
  var stored = null;
  try { stored = localStorage.getItem('quill-theme'); } catch (e) { /* not kept, then */ }
  if (stored) root.setAttribute('data-theme', stored);

  document.addEventListener('DOMContentLoaded', function () {
    document.getElementById('theme').onclick = function () {
      var shown = root.getAttribute('data-theme') ||
        (matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light');
      var next = shown === 'dark' ? 'light' : 'dark';
      root.setAttribute('data-theme', next);
      try { localStorage.setItem('quill-theme', next); } catch (e) { /* for this page only */ }
    };

    var field = document.getElementById('search');
    var results = document.getElementById('results');
    var contents = document.getElementById('contents');

    // Every word must be there; names count most, then titles, then text.
    function score(entry, words) {
      var sum = 0;
      for (var i = 0; i < words.length; i++) {
        var word = words[i];
        var name = entry.title.toLowerCase();
        var at = name.indexOf(word);
        if (name === word || name.split('.').pop() === word) sum += 100;
        else if (at === 0) sum += 40;
        else if (at > 0) sum += 20;
        else if (entry.text.toLowerCase().indexOf(word) >= 0) sum += 1;
        else return 0;
      }
      return sum;
    }

    function excerpt(text, word) {
      var at = Math.max(0, text.toLowerCase().indexOf(word) - 40);
      return (at > 0 ? '… ' : '') + text.substr(at, 120) + (text.length > at + 120 ? ' …' : '');
    }

    function show() {
      var words = field.value.toLowerCase().split(/\s+/).filter(Boolean);
      results.textContent = '';
      contents.hidden = words.length > 0;
      if (!words.length) return;
      var found = quillSearch.map(function (entry) {
        return { entry: entry, score: score(entry, words) };
      }).filter(function (hit) { return hit.score > 0; });
      found.sort(function (a, b) { return b.score - a.score; });
      found.slice(0, 30).forEach(function (hit) {
        var link = document.createElement('a');
        link.href = hit.entry.url;
        link.textContent = hit.entry.title;
        var text = document.createElement('p');
        text.textContent = excerpt(hit.entry.text, words[0]);
        results.appendChild(link);
        results.appendChild(text);
      });
      if (!found.length) results.textContent = 'Nothing found.';
    }
    field.addEventListener('input', show);
    if (field.value) show();
  });
})();
