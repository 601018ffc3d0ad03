<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="html" indent="no"/>
<xsl:template match="/"><input checked="no" value="a&amp;b&lt;c&quot;"/><a href="?q={{1}}&amp;r=%20" title="a b" name="&#xE9;"/><a href="&#xE9; y"/></xsl:template>
</xsl:stylesheet>
