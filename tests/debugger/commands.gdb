# Prints one of each, and what it prints goes into the transcript.
set width 0
set disable-randomization off
set print thread-events off
break Stop
run
set trace-commands on
print reference
up-silently
print array
print emptyArray
print maxArray
print blockArray
print list
print slist
print emptySlist
print tree
print emptySet
print set
print multiSet
print map
print multiMap
print hashMap
print multiHashMap
print hashSet
print emptyHashSet
print nested
print literal
print owned
print emptyString
print stackString
print guid
print version
print nothing
print number
print text
print vertex
print reference
print null
set print pretty on
print ship
print shipVariant
