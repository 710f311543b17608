# Prints one of each, and what it prints goes into the transcript.
set width 0
set disable-randomization off
set print thread-events off
break Stop
run
python
def try_to(command):
    try:
        gdb.execute(command)
    except gdb.error:
        pass
end
set trace-commands on
print reference
up-silently 2
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
print array[1]
print array[0] + maxArray[1]
print blockArray[2]
print array.Size()
print maxArray.IsEmpty()
print emptyArray.IsEmpty()
print map.Size()
print hashMap.Size() + slist.Size()
python try_to("print array[5]")
python try_to("print maxArray[2]")
down-silently
print blockPos
print blockEnd
print listPos
print slistPos
print slistEnd
print mapPos
print mapEnd
print hashPos
print hashEnd
print arrayWalk
print arrayDone
print blockStart
print blockWalk
print setStart
print setWalk
print hashStart
print hashWalk
print hashDone
print valueWalk
print *blockPos
print *listPos
print mapPos->m_value
print *hashPos
print arrayWalk.Current()
print setWalk.Current()
python try_to("print *mapEnd")
python try_to("print arrayDone.Current()")
up-silently 2
print literal
print owned
print emptyString
print stackString
print owned.Length()
print owned.ToCString()[0]
print guid
print version
print resource
print noResource
print nothing
print number
print text
print vertex
print reference
print null
set print pretty on
print ship
print shipVariant
