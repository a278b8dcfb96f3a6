// The script of the HTML report. It adds one thing: the values under the pointer, or under a cursor that the arrow keys
// move. It reads them from the paths that are drawn, so that nothing stands in the page twice. As XML takes it: without
// the characters that begin a tag or an entity.

#include "ReportHtmlParts.h"

namespace ReportHtml
{
const char* const SCRIPT = R"js(
(function () {
  "use strict";
  function steps(text, x, y, values) {
    var numbers = text.match(/-?\d+/g) || [];
    values[x] = y;
    for (var i = 0; numbers.length > i + 1; i += 2) {
      x += Number(numbers[i]);
      y += Number(numbers[i + 1]);
      values[x] = y;
    }
    return x;
  }
  function read(path) {
    var high = [], low = [], run, runs = /M(\d+) (\d+)l([-\d ]+)(?:V(\d+)l([-\d ]+)z)?/g, d = path.getAttribute("d");
    while ((run = runs.exec(d)) !== null) {
      var end = steps(run[3], Number(run[1]), Number(run[2]), high);
      if (run[4] !== undefined) steps(run[5], end, Number(run[4]), low);
    }
    return { high: high, low: low };
  }
  function decimal(value) {
    return isFinite(value) ? value.toFixed(1).replace("-", "\u2212") : (value > 0 ? "\u221e" : "\u2212\u221e");
  }
  function tell(path, part) {
    if (!path.dataset.name) return "";
    var box = path.ownerSVGElement.viewBox.baseVal, series = path.series || (path.series = read(path));
    var column = Math.min(Math.floor(part * box.width), box.width - 1);
    var top = Number(path.dataset.from), bottom = Number(path.dataset.to), unit = path.dataset.unit;
    function value(list) { return top + (bottom - top) * list[column] / box.height; }
    if (series.high[column] === undefined) return "";
    var shown = value(series.high);
    if (unit === "dBFS") {
      shown = Math.max(Math.abs(shown), Math.abs(value(series.low)));
      shown = 20 * Math.log10(shown);
    } else if (unit === "LUFS" ? bottom >= shown : false) shown = -Infinity;
    return " \u00b7 " + path.dataset.name + " " + decimal(shown) + (unit === "\u00d7" ? "" : " ") + unit;
  }
  function clock(seconds) {
    var whole = Math.floor(seconds), rest = whole % 60;
    return Math.floor(whole / 60) + ":" + (10 > rest ? "0" : "") + rest;
  }
  document.querySelectorAll("svg.chart").forEach(function (chart) {
    var seconds = Number(chart.dataset.seconds), part = 0, top = Number(chart.dataset.top);
    var line = document.createElementNS(chart.namespaceURI, "line");
    var output = document.createElement("span");
    output.className = "at";
    line.setAttribute("class", "cursor");
    line.setAttribute("y1", top);
    line.setAttribute("y2", top + Number(chart.dataset.plot));
    chart.previousElementSibling.appendChild(output);
    chart.setAttribute("tabindex", "0");
    chart.setAttribute("role", "slider");
    chart.setAttribute("aria-valuemin", "0");
    chart.setAttribute("aria-valuemax", String(seconds));
    chart.setAttribute("aria-valuenow", "0");
    function show(where) {
      part = Math.min(Math.max(where, 0), 1);
      var text = clock(Number(chart.dataset.first) + part * seconds);
      chart.querySelectorAll(".series path").forEach(function (path) { text += tell(path, part); });
      line.setAttribute("x1", 100 * part + "%");
      line.setAttribute("x2", 100 * part + "%");
      chart.appendChild(line);
      output.textContent = text;
      chart.setAttribute("aria-valuenow", String(Math.round(part * seconds)));
      chart.setAttribute("aria-valuetext", text);
    }
    function hide() {
      line.remove();
      output.textContent = "";
    }
    chart.addEventListener("pointermove", function (event) {
      var box = chart.getBoundingClientRect();
      show((event.clientX - box.left) / box.width);
    });
    chart.addEventListener("pointerleave", hide);
    chart.addEventListener("focus", function () { if (chart.matches(":focus-visible")) show(part); });
    chart.addEventListener("blur", hide);
    chart.addEventListener("keydown", function (event) {
      var moves = { ArrowLeft: -0.01, ArrowRight: 0.01, PageDown: -0.1, PageUp: 0.1, Home: -1, End: 1 };
      if (moves[event.key] === undefined) return;
      event.preventDefault();
      show(part + moves[event.key]);
    });
  });
}());
)js";
} // namespace ReportHtml
