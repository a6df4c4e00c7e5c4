#include "ltreg/commands/html_page.h"

#include <algorithm>
#include <string_view>

#include "ltreg/cli/shown_text.h"
#include "ltreg/exchange/utf16.h"
#include "ltreg/registry/branch.h"

namespace ltreg {
namespace {

// The policy keeps everything from the page that is not in it, whatever the data may hold.
constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'">
<style>
:root { color-scheme: light dark; --text: #1c2024; --page: #fff; --dim: #5c656e; --line: #d8dee4;
        --gone: #ffebe9; --came: #dafbe1; }
@media (prefers-color-scheme: dark) {
  :root { --text: #e6edf3; --page: #0d1117; --dim: #9aa4af; --line: #30363d; --gone: #4b1c1f;
          --came: #153d22; }
}
body { margin: 1.5em; font: 14px/1.45 system-ui, sans-serif; color: var(--text);
       background: var(--page); }
h1 { font-size: 1.25em; overflow-wrap: anywhere; }
p, th, .type { color: var(--dim); }
input { font: inherit; width: min(30em, 100%); padding: .3em .5em; }
details details, table { margin-left: 1.2em; }
summary { cursor: pointer; overflow-wrap: anywhere; }
table { border-collapse: collapse; margin-bottom: .4em; }
td, th { text-align: left; vertical-align: top; padding: .1em .8em .1em .3em;
         border-bottom: 1px solid var(--line); }
td { white-space: pre-wrap; overflow-wrap: anywhere; unicode-bidi: isolate;
     font-family: ui-monospace, monospace; }
td.type { white-space: nowrap; }
td.gone { background: var(--gone); }
td.came { background: var(--came); }
[hidden] { display: none; }
</style>
)";

constexpr char kSearch[] =
    R"(<p id="search" hidden><label>Search <input type="search"></label> <span role="status"></span></p>
)";

// A key is shown where its name matches, or a value of it, or a key inside it.
constexpr char kScript[] = R"(<script>
(() => {
  const search = document.getElementById('search');
  const input = search.querySelector('input');
  const status = search.querySelector('span');
  let keys;
  const prepare = () => [...document.querySelectorAll('details')].map(key => ({
    key,
    open: key.open,
    name: key.firstElementChild.textContent.toLowerCase(),
    parent: key.parentElement.closest('details'),
    rows: [...(key.querySelector(':scope > table')?.tBodies[0].rows ?? [])].map(
      row => ({row, text: row.textContent.toLowerCase()})),
  }));
  const show = () => {
    keys ??= prepare();
    const wanted = input.value.toLowerCase();
    const above = new Set();
    let found = 0;
    for (const {key, open, name, parent, rows} of keys.slice().reverse()) {
      const named = name.includes(wanted);
      let hits = 0;
      for (const {row, text} of rows) {
        const hit = text.includes(wanted);
        hits += hit;
        row.hidden = !hit && !named;
      }
      found += hits || named;
      const shown = named || hits > 0 || above.has(key);
      key.hidden = !shown;
      key.open = wanted ? hits > 0 || above.has(key) : open;
      if (shown && parent) above.add(parent);
    }
    status.textContent = wanted ? `${found} found` : '';
  };
  let timer;
  input.addEventListener('input', () => { clearTimeout(timer); timer = setTimeout(show, 150); });
  search.hidden = false;
})();
</script>
)";

// Pages with fewer values are shown as a whole, of others the uppermost keys.
constexpr std::size_t kMostOpen = 500;
constexpr std::size_t kOpenDepth = 2;

// As it can be shown: controls and what is no UTF-8 as "\x" and digits, and no markup.
std::string markup(const std::string& text) {
  const bool isText = isUtf8(text);
  std::string result;
  for (const char byte : escapeControls(text)) {
    switch (byte) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        if (isText || static_cast<unsigned char>(byte) < 0x80) {
          result += byte;
        } else {
          result += "\\x" + hexDigits(std::string_view(&byte, 1));
        }
    }
  }
  return result;
}

std::string cell(const std::string& content, const char* kind) {
  return std::string("<td class=\"") + kind + "\">" + content + "</td>";
}

// The items of a list stand below one another.
std::string shownValue(const Value& value) {
  if (value.type != REG_MULTI_SZ) {
    return markup(onOneLine(value));
  }
  std::string lines;
  for (const std::string& item : itemsOf(value)) {
    lines.append(lines.empty() ? "" : "\n").append(markup(item));
  }
  return lines;
}

class Page {
 public:
  Page(Output& output, const std::string& title, std::size_t count)
      : m_output(output), m_opensAll(count <= kMostOpen) {
    m_output.bytes(kHead);
    m_output.line("<title>" + markup(title) + "</title>\n</head>\n<body>\n<h1>" + markup(title) +
                  "</h1>");
    m_output.bytes(kSearch);
  }

  void paragraph(const std::string& text) { m_output.line("<p>" + markup(text) + "</p>"); }

  void beginKey(const std::string& name, std::size_t depth) {
    const bool opens = m_opensAll || depth < kOpenDepth;
    m_output.line((opens ? "<details open><summary>" : "<details><summary>") + markup(name) +
                  "</summary>");
  }

  // Rows of cells below a head.
  void table(const std::string& head, const std::vector<std::string>& rows) {
    if (!rows.empty()) {
      m_output.line("<table><thead><tr>" + head + "</tr></thead><tbody>");
      for (const std::string& row : rows) {
        m_output.line("<tr>" + row + "</tr>");
      }
      m_output.line("</tbody></table>");
    }
  }

  void endKeys(std::size_t count) {
    for (; count > 0; --count) {
      m_output.line("</details>");
    }
  }

  void finish() {
    m_output.bytes(kScript);
    m_output.line("</body>\n</html>");
  }

 private:
  Output& m_output;
  bool m_opensAll;
};

std::size_t depthOf(const std::string& below) {
  return below.empty() ? 0
                       : 1 + static_cast<std::size_t>(std::count(below.begin(), below.end(), '\\'));
}

std::string sideCells(const std::optional<NamedValue>& value, const char* kind) {
  return value ? cell(markup(typeWord(value->value)), "type") + cell(shownValue(value->value), kind)
               : "<td></td><td></td>";
}

}  // namespace

void showTreePage(Output& output, const KeyArgument& top, const Branch& branch) {
  std::size_t count = 0;
  for (const KeyContent& key : branch) {
    count += key.values.size();
  }
  const std::string title = fullName(top.root, top.path);
  Page page(output, title, count);
  page.paragraph(countOf(branch.size(), "key") + ", " + countOf(count, "value"));
  std::size_t open = 0;
  for (const KeyContent& key : branch) {
    const std::size_t depth = depthOf(key.below);
    page.endKeys(open - std::min(open, depth));
    page.beginKey(depth == 0 ? title : std::string(lastComponent(key.below)), depth);
    open = depth + 1;
    std::vector<std::string> rows;
    for (const NamedValue& value : key.values) {
      rows.push_back(cell(markup(value.name), "name") +
                     cell(markup(typeWord(value.value)), "type") +
                     cell(shownValue(value.value), "value"));
    }
    page.table("<th>Name</th><th>Type</th><th>Value</th>", rows);
  }
  page.endKeys(open);
  page.finish();
}

void showDifferencePage(Output& output, const std::pair<std::string, std::string>& names,
                        const KeyArgument& top, const Difference& difference,
                        const std::string& defaultName) {
  Page page(output, names.first + " \u2192 " + names.second, 0);
  page.paragraph(difference.empty() ? "No difference"
                                    : countOf(difference.size(), "key") + " with differences");
  const std::string head = "<th>Name</th><th>Type</th><th>" + markup(names.first) +
                           "</th><th>Type</th><th>" + markup(names.second) + "</th>";
  for (const KeyDifference& key : difference) {
    const char* change = !key.wasThere ? " (added)" : !key.isThere ? " (deleted)" : "";
    page.beginKey(fullName(top.root, joinPaths(top.path, key.below)) + change, 0);
    std::vector<std::string> rows;
    for (const ValueDifference& value : key.values) {
      const std::string& name = (value.before ? value.before : value.after)->name;
      rows.push_back(cell(markup(name.empty() ? defaultName : name), "name") +
                     sideCells(value.before, "gone") + sideCells(value.after, "came"));
    }
    page.table(head, rows);
    page.endKeys(1);
  }
  page.finish();
}

}  // namespace ltreg
