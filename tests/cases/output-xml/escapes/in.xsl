<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:template match="/"><a x="&lt;&amp;&gt;&quot;&apos;&#10;&#13;&#10;.">&lt;&amp;&gt;"'<b y=""/><c></c></a></xsl:template>
</xsl:stylesheet>
