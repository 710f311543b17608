
// Appended to the search of the pages. It finds members by their name alone; this lets a search name the class as well,
// as in TArray::Insert. The class is taken off for the search; then only the members of that class stay in the results.
function splitQualified(typed)
{
  var parts = typed.replace(/ +/g, "").match(/^(.*)::([^:]*)$/);
  return parts ? { scope: parts[1].toLowerCase() + "::", name: parts[2] } : { scope: "", name: typed };
}

var SearchBoxOfNames = SearchBox;
SearchBox = function(name, resultsPath, label, extension)
{
  SearchBoxOfNames.call(this, name, resultsPath, label, extension);
  var searchForName = this.Search;
  this.Search = function()
  {
    var field = this.DOMSearchField();
    var typed = field.value;
    var wanted = splitQualified(typed);
    if (wanted.scope === "" || wanted.name === "")
      return searchForName.call(this);
    field.value = wanted.name;
    searchForName.call(this);
    field.value = typed;
    this.lastSearchValue = typed;
    window.frames.MSearchResults.location = this.lastResultsPage + "?" + escape(typed);
  };
};

var SearchResultsOfNames = SearchResults;
SearchResults = function(name)
{
  SearchResultsOfNames.call(this, name);
  var searchForName = this.Search;
  this.Search = function(search)
  {
    var wanted = splitQualified(unescape(search || window.location.search.substring(1)));
    var found = searchForName.call(this, wanted.name);
    if (wanted.scope !== "")
      this.KeepMembersOf(wanted.scope);
    return found;
  };
  this.KeepMembersOf = function(scope)
  {
    var rows = document.getElementsByClassName("SRResult");
    var rest = 0;
    for (var i = 0; i < rows.length; ++i)
    {
      var kept = 0;
      var members = rows[i].getElementsByClassName("SRScope");
      for (var j = 0; j < members.length; ++j)
      {
        var isKept = (members[j].textContent.toLowerCase().replace(/<.*?>/g, "") + "::").lastIndexOf(scope, 0) === 0;
        members[j].style.display = isKept ? "" : "none";
        kept += isKept ? 1 : 0;
      }
      if (kept === 0)
        rows[i].style.display = "none";
      var children = rows[i].getElementsByClassName("SRChildren");
      if (children.length > 0)
        children[0].style.display = "block";
      rest += rows[i].style.display === "none" ? 0 : 1;
    }
    document.getElementById("NoMatches").style.display = rest === 0 ? "block" : "none";
  };
};
