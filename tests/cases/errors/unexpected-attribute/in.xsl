<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"><xsl:template match="/"><xsl:text>a
b
c</xsl:text><xsl:choose what="1"><xsl:when test="1"/></xsl:choose></xsl:template></xsl:stylesheet>